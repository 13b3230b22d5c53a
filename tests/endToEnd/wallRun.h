// A run of the library over a small screen, observed at the sockets of its lights.
#pragma once

#include "tests/colour/dominantScreen.h"
#include "tests/endToEnd/heldSleep.h"
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/panelRecords.h"
#include "tests/support/virtualScreen.h"

#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace test {

class WallRun : public testing::Test {
protected:
    void TearDown() override;

    // Listens to each of `lights`, which are on 127.0.57.x, then configures and starts.
    void start(int mode, const std::vector<LightSetup> &lights);

    // The same for melt and fade mode, over a dark screen, which is polled once. After that, the
    // test decides when the screen is polled: a frame read during its copy may give any colour.
    void startAtPoll(int mode, const std::vector<LightSetup> &lights);

    // Draws a screen and waits until the library's frame has its palette; after startAtPoll(),
    // until that screen has been polled once.
    void show(const Pixels &screen);

    // Polls once more; only after startAtPoll().
    void pollAgain();

    // From here on, the mode polls the screen at its own rate.
    void pollFreely() { pause.reset(); }

    // The records of each light's next datagram, in order. An empty list if one is missing or
    // malformed.
    std::vector<std::vector<Record>> nextFrame();

    // Each light's next datagram must have all its panels in this colour.
    void expectFrame(std::uint32_t colour);

    // No light has received a datagram that the test has not read.
    void expectNothing();

    // The JSON text of the frames captured last, fetched into a buffer of exactly its size.
    static std::string snapshotText();
    // The expected text for these lines, one per light.
    std::string snapshotOf(const std::vector<std::string> &lines) const;

    // The first of the possible seeds of this run for which `explains` holds.
    template <class Explains> std::optional<unsigned> seedThat(Explains explains) const {
        for (std::time_t seed = startedAt; seed <= std::time(nullptr); ++seed)
            if (explains(static_cast<unsigned>(seed)))
                return static_cast<unsigned>(seed);
        return std::nullopt;
    }

    UsedScreen screen{screenSide, screenSide};
    std::vector<LightSetup> lights;
    std::vector<std::unique_ptr<LightReceiver>> receivers;
    std::time_t startedAt = 0;
    std::optional<HeldSleep> pause; // between two polls

private:
    void draw(const Pixels &pixels);
};

// `count` panels with identifiers from `first` on, in the middle of the screen.
std::vector<PanelPlace> panels(int first, int count);

} // namespace test
