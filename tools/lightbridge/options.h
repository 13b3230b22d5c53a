// The command line and the exit statuses.
#pragma once

#include "tools/wall/wall.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace lightbridge {

// The exit statuses, which --help lists. Thrown to end the program after the reason was printed.
enum ExitStatus {
    exitOk = 0,
    exitOther = 1,
    exitUsage = 2,
    exitFile = 3,
    exitDocument = 4,
    exitAddress = 5,
    exitSocket = 6,
};

enum class Command { Run, Identify, Test };

struct Options {
    Command command = Command::Run;
    std::string configPath;
    std::optional<std::chrono::milliseconds> duration;
    std::optional<std::size_t> output; // the only one to drive
    std::chrono::milliseconds transitionUnit = panelwall::usualTransitionUnit;

    bool limitsFlashes = true;

    // identify
    std::int32_t number = 0; // of a panel or pixel
    bool isPixel = false;
};

// Parses the command line. Throws an ExitStatus after printing help or an error.
Options parseOptions(int argc, char **argv);

} // namespace lightbridge
