#include "tools/panelwall/options.h"

#include "tools/config/configDocument.h"
#include "tools/lights/text.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace panelwall {

void printError(const std::string &path, const std::string &text) {
    std::cerr << "panelwall: " << config::describe(path, {"", text}) << "\n";
}

void failWith(ExitStatus status, const std::string &path, const std::string &text) {
    printError(path, text);
    throw status;
}

static const char about[] =
    "Light devices in software: listens at the address and port of every device of a mirroring\n"
    "configuration, on this machine only, and shows what each panel was sent.";

static const char footer[] = R"(
Recordings: --record writes every datagram with its time of arrival, malformed ones too, and
the configuration's devices, so that a replay needs no CONFIG. If you give one, its devices
replace the recording's devices, in order. A replay ends with the recording. --send
sends each datagram to its device's address and port, as long as that is on this machine.
--compare matches devices by address and port, and reports for each where the datagrams
differ, and separately how their timing differs; it ends with 0 when all devices were sent the
same, 1 when they were not, and 2 when this cannot be decided. The manual's
docs/recordings.md describes the file format.

On a terminal the wall is redrawn in place; otherwise one line per device is printed every
second. Device numbers count from 0, as in the document. When the program ends, a last line
per device goes to standard output.

A panel moves from the colour it shows to the one it was sent within the transition time that
came with it, linearly in each channel; panels that were sent no colour yet start from black.
The protocol gives transition times no unit. One unit is taken as 100 milliseconds;
--transition-unit changes that, and 0 shows every colour at once. Pictures show the colours
of the moment at which they are taken.

Pictures: panels are drawn as the squares of screen that colour them, which have two thirds
of the panel's size (2 x scaleFactor x base / 3, base 150 for shapeType 0, else 100). Panels
that were sent no colour yet are hollow. One pixel is one screen pixel, unless the screen has
a side of more than 5120: then the picture is scaled down to that. Without --size the screen
is taken to be the smallest, with its origin at the top left, that holds every panel's square.
The file is replaced in one step, so it can be read at any time.

Live page: --web serves one page that shows the wall in a browser: every panel at its place
and in its colour as it changes, the last minute, and for each device how regularly
datagrams come. It can show a picture of the mirrored screen behind the panels. Nothing can
be changed from it. It is served on this machine only, on port 8060 unless PORT says
otherwise; 0 takes any free one. With --web-address it can be reached from elsewhere, such as
a phone, at the address given (0.0.0.0 for all). The page's address, which is printed, holds
a random token, new for every run: anyone who knows it sees the page and the screen behind the
panels, nobody else does. --web-link writes it to a file that only you can read. After the
end of a replay the page stays until a signal comes.

Signals: SIGUSR1 writes the picture and goes on. SIGINT (Ctrl-C), SIGTERM and SIGHUP end the
program, with exit status 0.

Exit statuses:
  0  ended by a signal or after --seconds
  1  standard output was closed, or another failure
  2  the command line is wrong
  3  the configuration cannot be read, or the picture, recording or link cannot be
     written
  4  the configuration is not valid, or names no device
  5  a device's address does not parse, is not loopback, or is another device's too
  6  a device's port is in use or cannot be opened
  7  the recording cannot be read or is damaged; it was played up to there
  8  the live page cannot be served at the address and port)";

// Accepts only a number from `least` to `most`; "nan" fails both comparisons.
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
    return text == "0" ? 0 : lights::wholeNumber(text, 65535);
}

static void addRecordingOptions(CLI::App &app, Options &options) {
    auto *record = app.add_option("--record", options.recordPath,
                                  "Write every datagram with its time of arrival to this file")
                       ->type_name("FILE");
    auto *replay = app.add_option("--replay", options.replayPath,
                                  "Show a recording instead of listening; needs no CONFIG")
                       ->type_name("FILE")
                       ->excludes(record);
    app.add_option("--speed", options.speed, "Replay this many times as fast (default 1)")
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

Options parseOptions(int argc, char **argv) {
    Options options;
    CLI::App app(about, "panelwall");
    app.footer(footer + 1); // without its leading line break
    app.set_version_flag("--version", "panelwall " MIRROR_VERSION);
    app.add_option("CONFIG", options.configPath, "The configuration document; - is standard input");
    addRecordingOptions(app, options);
    std::optional<double> seconds;
    app.add_option("--seconds", seconds, "End after this many seconds")
        ->type_name("N")
        ->check(numberFrom(0.001, 1e9));
    app.add_option("--snapshot", options.snapshotPath,
                   "Write a picture of the wall to this PNG file at the end and on SIGUSR1")
        ->type_name("FILE");
    std::string size;
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
    const auto checkPort = [](const std::string &text) {
        return text.empty() || parsePort(text)
                   ? std::string()
                   : "not a port from 0 to 65535 (write CONFIG before --web): " + text;
    };
    app.add_option("--web", port, "Serve the live page, on this port")
        ->type_name("[PORT]")
        ->expected(0, 1)
        ->check(checkPort);
    app.add_option("--web-address", web.address,
                   "Serve the live page at this address of the machine (default 127.0.0.1)")
        ->type_name("ADDRESS");
    app.add_option("--web-link", web.linkPath,
                   "Serve the live page, and write an HTML file that leads to it")
        ->type_name("FILE");
    try {
        app.parse(argc, argv);
        if (options.configPath.empty() && !options.replayPath && options.comparedPaths.empty())
            throw CLI::RequiredError("CONFIG");
    } catch (const CLI::ParseError &error) {
        throw app.exit(error) == 0 ? exitOk : exitUsage;
    }
    if (seconds)
        options.duration = std::chrono::milliseconds(static_cast<std::int64_t>(*seconds * 1000));
    options.screen = parseSize(size);
    options.transitionUnit = std::chrono::milliseconds(unit);
    web.port = parsePort(port).value_or(web.port);
    if (app.count("--web") + app.count("--web-address") + app.count("--web-link") > 0)
        options.web = web;
    return options;
}

} // namespace panelwall
