// mirrorctl displays
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/displayList.h"
#include "tools/mirrorctl/libraryCall.h"
#include "tools/mirrorctl/server.h"

#include <cstdio>
#include <memory>

namespace mirrorctl {

static void printTable(const std::vector<Display> &displays) {
    printf("%10s  %s\n", "displayID", "size in pixels");
    for (const auto &display : displays)
        printf("%10u  %s\n", display.displayID, describeSize(display).c_str());
}

static ExitStatus showDisplays(bool json) {
    const DisplayList list = listDisplays();
    if (json)
        puts(list.text.c_str());
    else if (!list.displays.empty())
        printTable(list.displays);
    if (list.isCut())
        fprintf(stderr, "The library lists only %s that there are.\n", describeCut(list).c_str());
    if (!list.displays.empty())
        return ExitStatus::done;
    if (tellServerSilence())
        return ExitStatus::displayMissing;
    fprintf(stderr, "There is no display to mirror.\n%s", noDisplayAdvice().c_str());
    return ExitStatus::displayMissing;
}

void addDisplaysCommand(CLI::App &program, Action &chosen) {
    auto *command = program.add_subcommand("displays", "List the displays with their sizes");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print the library's own text");
    command->callback([&chosen, json] {
        chosen = [json] {
            const StopSignals signals;
            return untilSignal(signals, "The displays are not listed",
                               [json] { return showDisplays(*json); });
        };
    });
}

} // namespace mirrorctl
