// mirrorctl displays, and the library's list for the other commands.
#include "tools/mirrorctl/displays.h"

#include "mirror/mirrorInterface.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/server.h"

#include <algorithm>
#include <cstdio>
#include <rapidjson/document.h>
#include <stdexcept>

namespace mirrorctl {

static const char notUnderstood[] = "the library's list of displays is not understood";

static std::uint32_t member(const rapidjson::Value &object, const char *name) {
    if (!object.IsObject() || !object.HasMember(name) || !object[name].IsUint())
        throw std::runtime_error(notUnderstood);
    return object[name].GetUint();
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
        throw std::runtime_error(notUnderstood);
    for (const auto &entry : tree["displays"].GetArray())
        list.displays.push_back(
            {member(entry, "displayID"), member(entry, "width"), member(entry, "height")});
    constexpr std::size_t maxListed = 10;
    list.total = list.displays.size();
    if (list.displays.size() >= maxListed)
        list.total = std::max(list.total, countDisplays().value_or(0));
    return list;
}

std::string describeCut(const DisplayList &list) {
    return std::to_string(list.displays.size()) + " of the " + std::to_string(list.total) +
           " displays";
}

std::string describeSize(const Display &display) {
    if (!display.hasPicture())
        return "no picture available";
    return std::to_string(display.width) + " x " + std::to_string(display.height);
}

static ExitStatus showDisplays(bool json) {
    const DisplayList list = listDisplays();
    if (json)
        std::puts(list.text.c_str());
    else if (!list.displays.empty())
        std::printf("%10s  %s\n", "displayID", "size in pixels");
    if (!json)
        for (const Display &display : list.displays)
            std::printf("%10u  %s\n", display.displayID, describeSize(display).c_str());
    if (list.isCut())
        std::fprintf(stderr, "The library lists only %s that there are.\n",
                     describeCut(list).c_str());
    if (!list.displays.empty())
        return ExitStatus::Done;
    if (!reportSilentServer())
        std::fprintf(stderr, "There is no display to mirror.\n%s", noDisplayHint().c_str());
    return ExitStatus::DisplayMissing;
}

void addDisplaysCommand(CLI::App &program, ExitStatus &status) {
    auto *command = program.add_subcommand("displays", "List the displays with their sizes");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print the library's own text");
    command->callback([&status, json] {
        const StopSignals signals;
        status = untilSignal(signals, "The displays are not listed",
                             [json] { return showDisplays(*json); });
    });
}

} // namespace mirrorctl
