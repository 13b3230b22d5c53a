#include "tools/panelwall/options.h"

#include "tools/config/configDocument.h"

#include <CLI/CLI.hpp>
#include <charconv>

namespace panelwall {

static const char about[] =
    "Light devices in software: listens at the address and port of every device of a mirroring\n"
    "configuration, on this machine only, and shows what each panel was sent.";

static const char footer[] =
    "On a terminal the wall is redrawn in place; otherwise one line per device is printed every\n"
    "second. Device numbers count from 0, as in the document. When the program ends, a last line\n"
    "per device goes to standard output.\n"
    "\n"
    "A panel moves from the colour it shows to the one it was sent within the transition time "
    "that\n"
    "came with it, linearly in each channel; panels that were sent no colour yet start from "
    "black.\n"
    "The protocol gives transition times no unit. One unit is taken as 100 milliseconds;\n"
    "--transition-unit changes that, and 0 shows every colour at once. Pictures show the colours\n"
    "of the moment at which they are taken.\n"
    "\n"
    "Pictures: panels are drawn as the squares of screen that colour them, which have two thirds\n"
    "of the panel's size (2 x scaleFactor x base / 3, base 150 for shapeType 0, else 100). Panels\n"
    "that were sent no colour yet are hollow. One pixel is one screen pixel, unless the screen "
    "has\n"
    "a side of more than 5120: then the picture is scaled down to that. Without --size the screen\n"
    "is taken to be the smallest, with its origin at the top left, that holds every panel's "
    "square.\n"
    "The file is replaced in one step, so it can be read at any time.\n"
    "\n"
    "Live page: --web serves one page that shows the wall in a browser: every panel at its place\n"
    "and in its colour as it changes, the last minute, and for each device how regularly\n"
    "datagrams come. It can show a picture of the mirrored screen behind the panels. Nothing can\n"
    "be changed from it. It is served on this machine only, on port 8060 unless PORT says\n"
    "otherwise; 0 takes any free one. With --web-address it can be reached from elsewhere, such "
    "as\n"
    "a phone, at the address given (0.0.0.0 for all). The page's address, which is printed, holds\n"
    "a random token, new for every run: anyone who knows it sees the page and the screen behind "
    "the\n"
    "panels, nobody else does. --web-link writes it to a file that only you can read. After the\n"
    "end of a replay the page stays until a signal comes.\n"
    "\n"
    "Signals: SIGUSR1 writes the picture and goes on. SIGINT (Ctrl-C), SIGTERM and SIGHUP end the\n"
    "program, with exit status 0.\n"
    "\n"
    "Exit statuses:\n"
    "  0  ended by a signal or after --seconds\n"
    "  1  standard output was closed, or another failure\n"
    "  2  the command line is wrong\n"
    "  3  the configuration cannot be read, or the picture, recording or link cannot be\n     "
    "written\n"
    "  4  the configuration is not valid, or names no device\n"
    "  5  a device's address does not parse, is not loopback, or is another device's too\n"
    "  6  a device's port is in use or cannot be opened\n"
    "  7  the recording cannot be read or is damaged; it was played up to there\n"
    "  8  the live page cannot be served at the address and port";

static const char recordingHelp[] =
    "Recordings: --record writes every datagram with its time of arrival, malformed ones too, and\n"
    "the configuration's devices, so that a replay needs no CONFIG. With one, the recording's\n"
    "devices are taken to be those of CONFIG, in order. A replay ends with the recording. --send\n"
    "sends each datagram to its device's address and port, as long as that is on this machine.\n"
    "--compare matches devices by address and port, tells for each where the datagrams differ, "
    "and\n"
    "apart from that how their timing does; it ends with 0 when all devices were sent the same,\n"
    "1 when they were not, and 2 when that cannot be said. The manual's docs/recordings.md\n"
    "has the form.";

// Accepts a number from `least` to `most`, and nothing else: no "nan", which compares with neither.
static auto numberFrom(double least, double most) {
    return [least, most](const std::string &text) {
        double number = 0.0;
        if (CLI::detail::lexical_cast(text, number) && number >= least && number <= most)
            return std::string();
        return "not a number from " + CLI::detail::to_string(least) + " to " +
               CLI::detail::to_string(most) + ": " + text;
    };
}

static std::optional<Size> parseSize(const std::string &text) {
    const auto size = config::parseScreenSize(text, 32768);
    if (!size)
        return std::nullopt;
    return Size{static_cast<int>(size->width), static_cast<int>(size->height)};
}

static std::optional<int> parsePort(const std::string &text) {
    int port = -1;
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, port);
    if (result.ec != std::errc() || result.ptr != end || port < 0 || port > 65535)
        return std::nullopt;
    return port;
}

static void addRecordingOptions(CLI::App &app, Options &options) {
    auto *record = app.add_option("--record", options.recordPath,
                                  "Write every datagram with its time of arrival to this file")
                       ->type_name("FILE");
    auto *replay = app.add_option("--replay", options.replayPath,
                                  "Show a recording instead of listening; needs no CONFIG")
                       ->type_name("FILE")
                       ->excludes(record);
    app.add_option("--speed", options.speed, "Replay so many times as fast (default 1)")
        ->type_name("X")
        ->check(numberFrom(0.001, 1e6))
        ->needs(replay);
    auto *send =
        app.add_flag("--send", options.send, "Send the replayed datagrams as well")->needs(replay);
    app.add_flag("--anywhere", options.anywhere,
                 "Send to addresses that are not on this machine, too")
        ->needs(send);
    app.add_option("--compare", options.comparedPaths,
                   "Tell where two recordings differ, and end; needs no CONFIG")
        ->type_name("FILE FILE")
        ->expected(2)
        ->excludes(record)
        ->excludes(replay);
}

std::optional<int> parseOptions(int argc, char **argv, Options &options) {
    CLI::App app(about, "panelwall");
    app.footer(std::string(recordingHelp) + "\n\n" + footer);
    app.set_version_flag("--version", "panelwall " MIRROR_VERSION);
    app.add_option("CONFIG", options.configPath, "The configuration document; - is standard input");
    addRecordingOptions(app, options);
    double seconds = 0.0;
    auto *secondsOption = app.add_option("--seconds", seconds, "End after this many seconds")
                              ->type_name("N")
                              ->check(numberFrom(0.001, 1e9));
    std::string snapshot;
    auto *snapshotOption =
        app.add_option("--snapshot", snapshot,
                       "Write a picture of the wall to this PNG file at the end and on SIGUSR1")
            ->type_name("FILE");
    std::string size;
    auto *sizeOption =
        app.add_option("--size", size, "The size of the mirrored screen in pixels, as in 1920x1080")
            ->type_name("WxH")
            ->check([](const std::string &text) {
                return parseSize(text) ? std::string() : "not a size such as 1920x1080: " + text;
            });
    std::int64_t unit = options.transitionUnit.count();
    app.add_option("--transition-unit", unit,
                   "How many milliseconds one unit of transition time lasts (default 100)")
        ->type_name("MS")
        ->check(CLI::Range(std::int64_t{0}, std::int64_t{60'000}));
    WebOptions web;
    std::string port;
    auto *webOption = app.add_option("--web", port, "Serve the live page, on this port")
                          ->type_name("[PORT]")
                          ->expected(0, 1)
                          ->check([](const std::string &text) {
                              return text.empty() || parsePort(text)
                                         ? std::string()
                                         : "not a port from 0 to 65535 (write CONFIG before "
                                           "--web): " +
                                               text;
                          });
    auto *webAddressOption =
        app.add_option("--web-address", web.address,
                       "Serve the live page at this address of the machine (default 127.0.0.1)")
            ->type_name("ADDRESS");
    auto *webLinkOption =
        app.add_option("--web-link", web.linkPath,
                       "Serve the live page, and write an HTML file that leads to it")
            ->type_name("FILE");
    try {
        app.parse(argc, argv);
        if (options.configPath.empty() && !options.replayPath && options.comparedPaths.empty())
            throw CLI::RequiredError("CONFIG");
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? exitOk : exitUsage;
    }
    if (secondsOption->count() > 0)
        options.duration = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
    if (snapshotOption->count() > 0)
        options.snapshotPath = snapshot;
    if (sizeOption->count() > 0)
        options.screen = parseSize(size);
    options.transitionUnit = std::chrono::milliseconds(unit);
    if (webOption->count() + webAddressOption->count() + webLinkOption->count() > 0) {
        web.port = parsePort(port).value_or(web.port);
        options.web = web;
    }
    return std::nullopt;
}

} // namespace panelwall
