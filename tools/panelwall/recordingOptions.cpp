#include "tools/panelwall/recordingOptions.h"

#include "tools/panelwall/numberRange.h"

namespace panelwall {

const char recordingHelp[] =
    "Recordings: --record writes every datagram with its time of arrival, malformed ones too, and\n"
    "the configuration's devices, so that a replay needs no CONFIG. With one, the recording's\n"
    "devices are taken to be those of CONFIG, in order. A replay ends with the recording. --send\n"
    "sends each datagram to its device's address and port, as long as that is on this machine.\n"
    "--compare matches devices by address and port, tells for each where the datagrams differ, "
    "and\n"
    "apart from that how their timing does; it ends with 0 when all devices were sent the same,\n"
    "1 when they were not, and 2 when that cannot be said. The manual's docs/recordings.md\n"
    "has the form.";

void addRecordingOptions(CLI::App &app, Options &options) {
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

} // namespace panelwall
