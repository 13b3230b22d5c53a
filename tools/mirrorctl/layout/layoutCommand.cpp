// mirrorctl layout
#include "tools/config/modes.h"
#include "tools/lights/address.h"
#include "tools/lights/text.h"
#include "tools/mirrorctl/commands.h"
#include "tools/mirrorctl/displays.h"
#include "tools/mirrorctl/layout/layoutPlan.h"
#include "tools/mirrorctl/libraryMessages.h"
#include "tools/mirrorctl/server.h"

#include <cstdio>
#include <stdexcept>

namespace mirrorctl {

struct LayoutOptions {
    LayoutPlan plan; // without its screen
    std::optional<std::int64_t> display;
    std::optional<config::ScreenSize> screen;
    std::optional<std::int32_t> mode;
    std::vector<std::string> bridges;
};

static std::string listed(const std::vector<Display> &displays) {
    std::string text;
    for (const Display &display : displays)
        text += "  " + std::to_string(display.displayID) + "  (" + describeSize(display) + ")\n";
    return text;
}

// The named display, or the only one; never a guess. Prints the reason if there is none.
static std::optional<Display> findDisplay(const LayoutOptions &options) {
    const OutputRedirection toStandardError(STDERR_FILENO);
    const DisplayList list = listDisplays();
    const auto &displays = list.displays;
    if (displays.empty()) {
        if (reportSilentServer())
            std::fputs("Name a display with --display and its size with --screen.\n", stderr);
        else
            std::fprintf(stderr,
                         "There is no display here. Name one with --display and its size with "
                         "--screen.\n%s",
                         noDisplayHint().c_str());
        return std::nullopt;
    }
    if (!options.display && displays.size() > 1) {
        std::fprintf(stderr, "There are several displays; name one with --display:\n%s",
                     listed(displays).c_str());
        return std::nullopt;
    }
    for (const Display &display : displays)
        if (!options.display || display.is(static_cast<std::int32_t>(*options.display)))
            return display;
    if (list.isCut())
        std::fprintf(stderr, "The library does not list this display. It lists only %s:\n%s",
                     describeCut(list).c_str(), listed(displays).c_str());
    else
        std::fprintf(stderr, "There is no such display here. There are:\n%s",
                     listed(displays).c_str());
    return std::nullopt;
}

static ExitStatus makeLayout(const LayoutOptions &options) {
    LayoutPlan plan = options.plan;
    for (const std::string &url : options.bridges)
        addBridge(plan, url);
    if (plan.addresses.empty()) {
        std::fputs("ADDRESS is required, or a light with --bridge.\n", stderr);
        return ExitStatus::Usage;
    }
    const auto display = options.display && options.screen
                             ? Display{static_cast<std::uint32_t>(*options.display)}
                             : findDisplay(options);
    if (!display)
        return ExitStatus::DisplayMissing;
    if (!options.screen && !display->hasPicture()) {
        std::fprintf(
            stderr,
            "Display %u gives no picture, so its size is not known; name it with --screen.\n",
            display->displayID);
        return ExitStatus::DisplayMissing;
    }
    plan.screen = options.screen.value_or(config::ScreenSize{display->width, display->height});
    if (const std::string problem = problemOf(plan); !problem.empty()) {
        std::fprintf(stderr, "No configuration can be made from this: %s.\n", problem.c_str());
        return ExitStatus::Usage;
    }
    config::Document document{static_cast<std::int32_t>(display->displayID),
                              options.mode.value_or(config::matchMode), layOut(plan)};
    if (!plan.outputs.empty())
        document.bridge = config::BridgeEntry{plan.outputs};
    const std::string text = config::documentText(document);
    for (const auto &problem : config::review(config::readText(text), plan.screen).problems)
        if (problem.severity != config::Severity::Caution)
            throw std::logic_error("the layout came out faulty: " +
                                   config::describe("layout", problem));
    std::fputs(text.c_str(), stdout);
    const int side = 2 * static_cast<int>(lights::halfSide(document.devices.front()));
    std::fprintf(stderr,
                 "%s on %s, each coloured by %d x %d pixels of the %u x %u of "
                 "display %u.\n",
                 lights::counted(plan.shape.panels(), "panel").c_str(),
                 lights::counted(document.devices.size(), "device").c_str(), side, side,
                 plan.screen.width, plan.screen.height, display->displayID);
    return ExitStatus::Done;
}

static std::string checkAddress(const std::string &text) {
    const auto error = lights::findAddressError(text);
    return error ? error->message + "; " + error->fix : std::string();
}

static std::string checkBridge(const std::string &text) {
    LayoutPlan plan;
    return addBridge(plan, text) ? std::string()
                                 : "expected ddp://, wled://, artnet:// or e131:// and the light's "
                                   "address in numbers, "
                                   "perhaps with :PORT and (artnet, e131) /UNIVERSE, found " +
                                       text;
}

void addLayoutCommand(CLI::App &program, ExitStatus &status) {
    auto *command =
        program.add_subcommand("layout", "Make a configuration from a shape and addresses");
    const auto options = std::make_shared<LayoutOptions>();
    addParsed(*command, "SHAPE", options->plan.shape, parseShape,
              "rows x columns, such as 4x6, or strip:N, with at most " + std::to_string(maxPanels) +
                  " panels",
              "ROWSxCOLUMNS, such as 4x6, for a grid that fills the screen, or strip:N for N "
              "panels around its edges")
        ->required()
        ->type_name("");
    command->add_option("ADDRESS", options->plan.addresses, "The devices, which share the panels")
        ->type_name("")
        ->check(checkAddress);
    command
        ->add_option("--bridge", options->bridges,
                     "Instead of or after the devices, a light with another protocol, such as "
                     "ddp://192.0.2.40, which lightbridge drives; can be repeated")
        ->type_name("URL")
        ->allow_extra_args(false)
        ->check(checkBridge);
    command
        ->add_option("--display", options->display,
                     "The display, as mirrorctl displays lists it; may be left out when there is "
                     "only one")
        ->type_name("ID")
        ->check(CLI::Range(std::int64_t{INT32_MIN}, std::int64_t{UINT32_MAX}).description(""));
    addScreen(*command, options->screen,
              "The display's size in pixels, such as 1920x1080; together with --display no display "
              "is looked for");
    command
        ->add_option("--control-version", options->plan.controlVersion,
                     "1 for devices with narrow datagrams, any other number for wide ones "
                     "(default 2)")
        ->type_name("N");
    addMode(*command, options->mode, "match (default), melt, fade or palette");
    command->footer(
        "The configuration goes to standard output:\n"
        "\n"
        "    mirrorctl layout 4x6 192.0.2.7 192.0.2.8 > wall.json\n"
        "    mirrorctl layout strip:60 192.0.2.7 --control-version 1 > frame.json\n"
        "    mirrorctl layout strip:120 --bridge ddp://192.0.2.40 > strip.json\n"
        "\n"
        "Panels are numbered from 1 on each device: a grid row by row from the top left, a strip\n"
        "clockwise from the top left corner. Several devices get equal runs of them, in order.\n"
        "For lights with other numbers, change the panelID members by hand, and let mirrorctl\n"
        "check look at the result.\n"
        "\n"
        "With --bridge, lightbridge listens at a device on this machine, and sends its colours to\n"
        "the light. Run both: mirrorctl run strip.json, lightbridge strip.json.\n\n");
    onCommand(*command, status, options, makeLayout);
}

} // namespace mirrorctl
