#include "tools/mirrorctl/suitability.h"

#include "tools/config/modes.h"
#include "tools/lights/deviceAddress.h"

#include <algorithm>

namespace mirrorctl {

std::vector<config::Problem> modeProblems(const config::Document &document) {
    if (config::modeName(document.mode))
        return {};
    return {{"/mode",
             "expected 0 (match), 1 (melt), 2 (fade) or 3 (palette), found " +
                 std::to_string(document.mode) + "; a run in any other mode ends at once",
             "choose one of these four"}};
}

std::vector<config::Problem> addressProblems(const config::Document &document) {
    std::vector<config::Problem> problems;
    for (std::size_t i = 0; i < document.devices.size(); ++i)
        if (auto problem = config::addressProblem(document.devices[i].ip)) {
            problem->pointer = "/devices/" + std::to_string(i) + "/ip";
            problems.push_back(std::move(*problem));
        }
    return problems;
}

std::vector<config::Problem> displayProblems(const config::Document &document,
                                             const DisplayList &list) {
    // The library keeps identifiers unsigned.
    const auto wanted = static_cast<std::uint32_t>(document.displayID);
    const auto isWanted = [&](const Display &display) { return display.displayID == wanted; };
    if (std::any_of(list.displays.begin(), list.displays.end(), isWanted))
        return {};
    std::string there;
    for (const auto &display : list.displays) {
        there += there.empty() ? "" : ", ";
        there += std::to_string(display.displayID) + " (" + describeSize(display) + ")";
    }
    const std::string found = "; found " + std::to_string(document.displayID);
    if (list.displays.empty())
        return {{"/displayID", "expected a display, but there is none at all" + found,
                 "mirrorctl doctor tells why there may be none"}};
    if (list.isCut())
        return {{"/displayID",
                 "expected one of the displays that the library lists: " + there + found +
                     ", which may be there all the same, since the library lists only " +
                     describeCut(list),
                 "choose one that is listed, or switch others off until this one is"}};
    return {{"/displayID", "expected one of the displays there are: " + there + found,
             "choose one of them; no other is ever taken in its place"}};
}

} // namespace mirrorctl
