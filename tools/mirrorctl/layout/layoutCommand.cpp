// mirrorctl layout
#include "tools/config/modes.h"
#include "tools/lights/panelArea.h"
#include "tools/mirrorctl/arguments.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/displayList.h"
#include "tools/mirrorctl/layout/layoutPlan.h"
#include "tools/mirrorctl/libraryTalk.h"
#include "tools/mirrorctl/server.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace mirrorctl {

struct LayoutOptions {
    std::string shape;
    std::vector<std::string> addresses;
    std::optional<std::int64_t> display;
    std::string screen;
    std::int32_t controlVersion = 2;
    std::string mode = "match";
};

static std::string listed(const std::vector<Display> &displays) {
    std::string text;
    for (const Display &display : displays)
        text += "  " + std::to_string(display.displayID) + "  (" + describeSize(display) + ")\n";
    return text;
}

// The display that is meant: the one that is named, or the only one. None is ever guessed.
static ExitStatus findDisplay(const LayoutOptions &options, Display &found) {
    const auto list = [] {
        const LibraryTalk talk;
        return listDisplays();
    }();
    const auto &displays = list.displays;
    if (displays.empty() && tellServerSilence()) {
        fputs("Name a display with --display and its size with --screen.\n", stderr);
        return ExitStatus::displayMissing;
    }
    if (displays.empty()) {
        fprintf(stderr,
                "There is no display here. Name one with --display and its size with --screen.\n%s",
                noDisplayAdvice().c_str());
        return ExitStatus::displayMissing;
    }
    if (!options.display && displays.size() > 1) {
        fprintf(stderr, "There are several displays; name one with --display:\n%s",
                listed(displays).c_str());
        return ExitStatus::displayMissing;
    }
    for (const Display &display : displays)
        if (!options.display || display.displayID == static_cast<std::uint32_t>(*options.display)) {
            found = display;
            if (display.width > 0 && display.height > 0)
                return ExitStatus::done;
            fprintf(stderr,
                    "Display %u gives no picture, so its size is not known; name it with "
                    "--screen.\n",
                    display.displayID);
            return ExitStatus::displayMissing;
        }
    if (list.isCut())
        fprintf(stderr, "The library does not list this display. It lists only %s:\n%s",
                describeCut(list).c_str(), listed(displays).c_str());
    else
        fprintf(stderr, "There is no such display here. There are:\n%s", listed(displays).c_str());
    return ExitStatus::displayMissing;
}

static ExitStatus makeLayout(const LayoutOptions &options) {
    LayoutPlan plan;
    Display display;
    if (!options.screen.empty() && options.display) {
        plan.screen = *parseSize(options.screen);
        display.displayID = static_cast<std::uint32_t>(*options.display);
    } else {
        if (const auto status = findDisplay(options, display); status != ExitStatus::done)
            return status;
        plan.screen = {display.width, display.height};
        if (!options.screen.empty())
            plan.screen = *parseSize(options.screen);
    }
    plan.displayID = static_cast<std::int32_t>(display.displayID);
    plan.shape = *parseShape(options.shape);
    plan.addresses = options.addresses;
    plan.controlVersion = options.controlVersion;
    plan.mode = *config::modeNumber(options.mode);
    if (const auto objection = objectionTo(plan); !objection.empty()) {
        fprintf(stderr, "This makes no configuration: %s.\n", objection.c_str());
        return ExitStatus::usage;
    }
    const config::Document document = layOut(plan);
    const std::string text = documentText(document);
    for (const auto &problem : config::reviewText(text, plan.screen).problems)
        if (problem.severity != config::Severity::caution)
            throw std::logic_error("the layout came out faulty: " +
                                   config::describe("layout", problem));
    fputs(text.c_str(), stdout);
    const int side = 2 * static_cast<int>(config::halfSide(document.devices.front()));
    fprintf(stderr,
            "%zu panels on %zu device%s, each coloured by %d x %d pixels of the %u x %u of "
            "display %u.\n",
            plan.shape.panels(), document.devices.size(), document.devices.size() == 1 ? "" : "s",
            side, side, plan.screen.width, plan.screen.height, display.displayID);
    return ExitStatus::done;
}

void addLayoutCommand(CLI::App &program, Action &chosen) {
    auto *command = program.add_subcommand("layout", "Make a configuration from a few words");
    const auto options = std::make_shared<LayoutOptions>();
    command
        ->add_option("SHAPE", options->shape,
                     "ROWSxCOLUMNS, such as 4x6, for a grid that fills the screen, or strip:N for "
                     "N panels around its edges")
        ->required()
        ->type_name("")
        ->check(shapeArgument());
    command->add_option("ADDRESS", options->addresses, "The devices, which share the panels")
        ->required()
        ->type_name("")
        ->check(addressArgument());
    command
        ->add_option("--display", options->display,
                     "The display, as mirrorctl displays lists it; may be left out when there is "
                     "only one")
        ->type_name("ID")
        ->check(CLI::Range(std::int64_t{INT32_MIN}, std::int64_t{UINT32_MAX}).description(""));
    command
        ->add_option("--screen", options->screen,
                     "The display's size in pixels, such as 1920x1080; together with --display no "
                     "display is looked for")
        ->type_name("WxH")
        ->check(sizeArgument());
    command
        ->add_option("--control-version", options->controlVersion,
                     "1 for devices with narrow datagrams, any other number for wide ones "
                     "(default 2)")
        ->type_name("N");
    command->add_option("--mode", options->mode, "match (default), melt, fade or palette")
        ->type_name("MODE")
        ->check(modeArgument());
    command->footer(
        "The configuration goes to standard output:\n"
        "\n"
        "    mirrorctl layout 4x6 192.0.2.7 192.0.2.8 > wall.json\n"
        "    mirrorctl layout strip:60 192.0.2.7 --control-version 1 > frame.json\n"
        "\n"
        "Panels are numbered from 1 on each device: a grid row by row from the top left, a strip\n"
        "clockwise from the top left corner. Several devices get equal runs of them, in order.\n"
        "Lights that count otherwise need their panelID members changed by hand; mirrorctl check\n"
        "then tells whether all is still well.\n\n" +
        exitStatusHelp());
    command->callback([&chosen, options] { chosen = [options] { return makeLayout(*options); }; });
}

} // namespace mirrorctl
