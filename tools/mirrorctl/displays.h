// The available displays, as the library lists them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mirrorctl {

struct Display {
    std::uint32_t displayID = 0;
    std::uint32_t width = 0; // pixels; 0 when the display cannot be captured
    std::uint32_t height = 0;

    bool hasPicture() const { return width > 0 && height > 0; }
    bool is(std::int32_t id) const { return displayID == static_cast<std::uint32_t>(id); }
};

struct DisplayList {
    std::string text; // the library's own
    std::vector<Display> displays;
    std::size_t total = 0; // number of displays: the library lists ten at most
    bool isCut() const { return total > displays.size(); }
};

// Asks the library, and also the system if the library's list is full. Throws std::runtime_error if
// the library returns no valid list.
DisplayList listDisplays();

// "10 of the 12 displays", of a list that is cut.
std::string describeCut(const DisplayList &list);

// "1920 x 1080", or that there is no picture.
std::string describeSize(const Display &display);

} // namespace mirrorctl
