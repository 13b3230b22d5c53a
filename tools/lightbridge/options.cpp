#include "tools/lightbridge/options.h"

#include <CLI/CLI.hpp>

namespace lightbridge {

static const char about[] =
    "Shows on lights with other protocols (DDP, E1.31, Art-Net, WLED) what light devices would be\n"
    "sent: listens at the address and port of every device of a mirroring configuration, on this\n"
    "machine only, and sends each device's colours to the outputs that the configuration's member\n"
    "lightbridge names.";

static const char footer[] = R"(
The lights are sent colours up to 50 times a second while something changes, and otherwise
about once a second. At the end, or when mirroring has stopped, they show black unless the
configuration says otherwise. The manual's docs/lightbridge.md describes the outputs.

More than three flashes within a second, of a panel or of a quarter of the wall, are held
back. That reduces flashes; it does not make a wall safe for everybody.

Signals: SIGINT (Ctrl-C), SIGTERM and SIGHUP end the program, with exit status 0.

Exit statuses:
  0  ended by a signal or after --seconds
  1  another failure
  2  the command line is wrong
  3  the configuration cannot be read
  4  the configuration is not valid, or names no output that can be driven
  5  a device's address does not parse, is not loopback, or is another device's too
  6  a device's port is in use or cannot be opened)";

static void addShared(CLI::App &app, Options &options, std::optional<double> &seconds) {
    app.add_option("--seconds", seconds, "End after this many seconds")
        ->type_name("N")
        ->check([](const std::string &text) {
            double number = 0.0; // "nan" fails both comparisons
            return CLI::detail::lexical_cast(text, number) && number >= 0.001 && number <= 1e9
                       ? std::string()
                       : "not a number from 0.001 to 1e9: " + text;
        });
    app.add_option("--output", options.output,
                   "Drive this output alone; outputs are counted from 0")
        ->type_name("N");
}

Options parseOptions(int argc, char **argv) {
    Options options;
    std::optional<double> seconds;
    CLI::App app(about, "lightbridge");
    app.footer(footer + 1); // without its leading line break
    app.set_version_flag("--version", "lightbridge " MIRROR_VERSION);
    app.add_option("CONFIG", options.configPath, "The configuration document; - is standard input");
    addShared(app, options, seconds);
    std::int64_t unit = options.transitionUnit.count();
    app.add_option("--transition-unit", unit,
                   "How many milliseconds one unit of transition time lasts (default 100)")
        ->type_name("MS")
        ->check(CLI::Range(std::int64_t{0}, std::int64_t{60'000}));
    app.add_flag("!--no-flash-limit", options.limitsFlashes,
                 "Pass on more than three flashes a second, which can cause seizures in some "
                 "people who see them");

    auto *identify = app.add_subcommand("identify", "Light one panel or pixel, to find it");
    identify->add_option("CONFIG", options.configPath, "The configuration document")->required();
    identify->add_option("N", options.number, "The panel's identifier")->required();
    identify->add_flag("--pixel", options.isPixel,
                       "N is a pixel of the receiver, counted from 0, and not a panel");
    addShared(*identify, options, seconds);
    auto *test = app.add_subcommand("test", "Play colours and a rainbow, without a screen");
    test->add_option("CONFIG", options.configPath, "The configuration document")->required();
    addShared(*test, options, seconds);
    try {
        app.parse(argc, argv);
        if (options.configPath.empty())
            throw CLI::RequiredError("CONFIG");
    } catch (const CLI::ParseError &error) {
        throw app.exit(error) == 0 ? exitOk : exitUsage;
    }
    if (identify->parsed())
        options.command = Command::Identify;
    if (test->parsed())
        options.command = Command::Test;
    if (seconds)
        options.duration = std::chrono::milliseconds(static_cast<std::int64_t>(*seconds * 1000));
    options.transitionUnit = std::chrono::milliseconds(unit);
    return options;
}

} // namespace lightbridge
