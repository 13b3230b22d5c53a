// The command line and the exit statuses.
#pragma once

#include "tools/panelwall/picture.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace panelwall {

// The exit statuses, which --help lists. Thrown to end the program after the reason was printed.
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

// Prints one line about the file at `path` on standard error.
void printError(const std::string &path, const std::string &text);

// Prints the error and throws the status.
[[noreturn]] void failWith(ExitStatus status, const std::string &path, const std::string &text);

// Where the live page is served.
struct WebOptions {
    std::string address = "127.0.0.1";
    int port = 8060;      // 0: any free one
    std::string linkPath; // of a file that redirects there; may be empty
};

struct Options {
    std::string configPath; // may be empty in a replay or comparison
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

// Parses the command line. Throws an ExitStatus after printing help or an error.
Options parseOptions(int argc, char **argv);

} // namespace panelwall
