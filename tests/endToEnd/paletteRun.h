// Palette mode foretold: its datagrams tick by tick from the number that seeded it.
#pragma once

#include "tests/endToEnd/lightSetup.h"
#include "tests/endToEnd/systemRandom.h"
#include "tests/support/panelRecords.h"

#include <cstdint>
#include <vector>

namespace test {

using Palette = std::vector<std::uint32_t>;

class PaletteForecast {
public:
    PaletteForecast(const std::vector<LightSetup> &lights, unsigned seed);

    // A panel that changes in this tick; its colour is `colourDraw` modulo the palette's length.
    struct Change {
        int id;
        int hold;
        int colourDraw;
    };

    // The next tick: for each light the panels that change.
    std::vector<std::vector<Change>> tick();

private:
    const std::vector<LightSetup> &lights;
    SystemRandom random;
    std::vector<std::vector<int>> left; // ticks until a panel changes; 0: now
};

// The records of these changes under a palette.
std::vector<Record> recordsOf(const std::vector<PaletteForecast::Change> &changes,
                              const Palette &palette);

} // namespace test
