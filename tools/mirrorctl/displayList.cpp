#include "tools/mirrorctl/displayList.h"

#include "mirror/mirrorInterface.h"
#include "tools/mirrorctl/server.h"

#include <algorithm>
#include <cstdlib>
#include <rapidjson/document.h>
#include <stdexcept>

namespace mirrorctl {

static std::uint32_t member(const rapidjson::Value &object, const char *name) {
    const auto found = object.FindMember(name);
    if (found == object.MemberEnd() || !found->value.IsUint())
        throw std::runtime_error("the library's list of displays is not understood");
    return found->value.GetUint();
}

DisplayList listDisplays() {
    // Several times the longest list of ten displays; the last byte stays zero.
    char buffer[4096] = {};
    if (getDisplays(buffer, sizeof buffer - 1) != 1)
        throw std::runtime_error("the library could not list the displays");
    DisplayList list;
    list.text = buffer;
    rapidjson::Document tree;
    tree.Parse(buffer);
    if (tree.HasParseError() || !tree.IsObject() || !tree.HasMember("displays") ||
        !tree["displays"].IsArray())
        throw std::runtime_error("the library's list of displays is not understood");
    for (const auto &entry : tree["displays"].GetArray()) {
        if (!entry.IsObject())
            throw std::runtime_error("the library's list of displays is not understood");
        list.displays.push_back(
            {member(entry, "displayID"), member(entry, "width"), member(entry, "height")});
    }
    constexpr std::size_t mostListed = 10;
    list.total = list.displays.size();
    if (list.displays.size() >= mostListed)
        list.total = std::max(list.total, countDisplays().value_or(0));
    return list;
}

std::string describeCut(const DisplayList &list) {
    return std::to_string(list.displays.size()) + " of the " + std::to_string(list.total) +
           " displays";
}

std::string describeSize(const Display &display) {
    if (display.width == 0 || display.height == 0)
        return "no picture to be had";
    return std::to_string(display.width) + " x " + std::to_string(display.height);
}

std::string noDisplayAdvice() {
    const char *server = std::getenv("DISPLAY");
    std::string x11;
    if (!server || !*server)
        x11 = "the variable DISPLAY is not set; set it to the X server's name, such as :0.";
    else
        x11 = std::string("DISPLAY is \"") + server +
              "\"; is that X server running, does it let this user in, has it a monitor?";
    return "  On X11: " + x11 + "\n  On macOS: is a user logged in at the screen?\n";
}

} // namespace mirrorctl
