// The wall as the page gets it: server-sent events with JSON texts.
//
//     wall    once: the configuration, the outline and every panel's place
//     past    once: the colours sent within the last minute
//     now     again and again: what every panel shows and every device has received
//
// docs/page.md describes their members.
#pragma once

#include "tools/panelwall/picture.h"
#include "tools/wall/wall.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace panelwall {

struct WallFacts {
    std::string config;       // the document's path, or the recording's
    bool isRecording = false; // that is played back
    std::int32_t mode = 0;
    Size screen;
    std::string sizeFrom = "panels"; // or "given" or "display": how its size came to be known
    std::chrono::milliseconds transitionUnit = usualTransitionUnit;
    Clock::time_point start;
};

std::string wallEvent(const Wall &wall, const WallFacts &facts);
std::string pastEvent(const Wall &wall);

// `lost` has an entry per device: the datagrams that its full queue has cost, where that is known.
std::string nowEvent(const Wall &wall, const WallFacts &facts,
                     const std::vector<std::optional<std::uint64_t>> &lost, Clock::time_point now);

} // namespace panelwall
