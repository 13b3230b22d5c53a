// The wall as it is sent to the page: server-sent events that contain JSON.
//
//     wall    once: the configuration, the outline and every panel's position
//     past    once: the colours sent within the last minute
//     now     repeatedly: what every panel shows and every device has received
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
    std::string config;       // the path of the document or recording
    bool isRecording = false; // whether a recording is played
    std::int32_t mode = 0;
    Size screen;
    std::string sizeFrom = "panels"; // where `screen` comes from; or "given" or "display"
    std::chrono::milliseconds transitionUnit = usualTransitionUnit;
    Clock::time_point start;
};

std::string wallEvent(const Wall &wall, const WallFacts &facts);
std::string pastEvent(const Wall &wall);

// `lost` has an entry per device, or none in a replay: the number of datagrams dropped because its
// receive queue was full, where that is known.
std::string nowEvent(const Wall &wall, const WallFacts &facts,
                     const std::vector<std::optional<std::uint64_t>> &lost, Clock::time_point now);

} // namespace panelwall
