#include "tools/mirrorctl/suitability.h"

#include "tools/config/modes.h"
#include "tools/config/pointer.h"
#include "tools/config/quote.h"

#include <algorithm>
#include <arpa/inet.h>

namespace mirrorctl {

std::vector<config::Problem> modeProblems(const config::Document &document) {
    if (config::modeName(document.mode))
        return {};
    return {{"/mode",
             "expected 0 (match), 1 (melt), 2 (fade) or 3 (palette), found " +
                 std::to_string(document.mode),
             "choose one of these four"}};
}

bool isAddress(const std::string &text) {
    in_addr v4;
    in6_addr v6;
    return inet_pton(AF_INET, text.c_str(), &v4) == 1 ||
           inet_pton(AF_INET6, text.c_str(), &v6) == 1;
}

std::vector<config::Problem> addressProblems(const config::Document &document) {
    std::vector<config::Problem> problems;
    for (std::size_t i = 0; i < document.devices.size(); ++i) {
        const std::string &ip = document.devices[i].ip;
        if (!isAddress(ip))
            problems.push_back({"/devices/" + std::to_string(i) + "/ip",
                                "expected an IPv4 or IPv6 address in numbers, such as 192.0.2.7 "
                                "or 2001:db8::7, found " +
                                    config::quote(ip.data(), ip.size()),
                                "write the device's address in numbers; names are not looked up"});
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
