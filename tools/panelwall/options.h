// The command line.
#pragma once

#include "tools/panelwall/picture.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace panelwall {

// What the program ends with; --help lists them.
enum ExitStatus {
    exitOk = 0,
    exitOther = 1,
    exitUsage = 2,
    exitFile = 3,
    exitDocument = 4,
    exitAddress = 5,
    exitSocket = 6,
    exitRecording = 7,
    exitPage = 8,
};

// Where the live page is served.
struct WebOptions {
    std::string address = "127.0.0.1";
    int port = 8060;      // 0: any free one
    std::string linkPath; // of a file that leads there; may be empty
};

struct Options {
    std::string configPath; // may be empty in a replay; is in a comparison
    std::optional<std::chrono::milliseconds> duration;
    std::optional<std::string> snapshotPath;
    std::optional<Size> screen;
    std::chrono::milliseconds transitionUnit = usualTransitionUnit;
    std::optional<WebOptions> web; // none: no live page

    std::optional<std::string> recordPath;
    std::optional<std::string> replayPath;
    double speed = 1.0;
    bool send = false;                      // the replayed datagrams
    bool anywhere = false;                  // beyond loopback
    std::vector<std::string> comparedPaths; // two or none
};

// Fills `options` from the arguments. An exit status when the program shall end at once, after help
// or a complaint has been printed.
std::optional<int> parseOptions(int argc, char **argv, Options &options);

} // namespace panelwall
