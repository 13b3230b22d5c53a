#include "tests/support/xServer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace test {

namespace {

bool has(const std::vector<std::string> &words, const std::string &word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::string bySize(const ServerOptions &options) {
    return std::to_string(options.width) + "x" + std::to_string(options.height);
}

std::vector<std::string> xvnc(const ServerOptions &options) {
    if (options.depth != 16 && options.depth != 24)
        skipTest("Xvnc has no depth of " + std::to_string(options.depth));
    return {"Xvnc",           "-geometry", bySize(options), "-depth", std::to_string(options.depth),
            "-rfbport",       "-1", // no viewers
            "-SecurityTypes", "None"};
}

std::vector<std::string> xorg(const ServerOptions &options) {
    if (options.depth != 16 && options.depth != 24 && options.depth != 30)
        skipTest("Xorg's dummy driver has no depth of " + std::to_string(options.depth));
    if (options.width < 64 || options.height < 64)
        skipTest("Xorg's dummy driver has no screen of " + bySize(options));
    if (has(options.extraArguments, "RANDR"))
        skipTest("without RANDR Xorg's screen keeps the size that it has at first");
    return {"Xorg",
            "-config",
            XORG_CONFIG,
            "-logfile",
            "/dev/null",
            "-depth",
            std::to_string(options.depth),
            "-novtswitch",
            "-sharevts"};
}

} // namespace

// ctest recognises a skipped test by these words.
void skipTest(const std::string &reason) {
    std::printf("[  SKIPPED ] THIS SERVER CANNOT BE TESTED ON: %s\n", reason.c_str());
    std::fflush(stdout);
    _exit(0);
}

ServerKind serverKind() {
    const char *const variable = std::getenv("MIRROR_TEST_SERVER");
    const std::string name = variable == nullptr ? "" : variable;
    if (name.empty() || name == "xvfb")
        return ServerKind::Xvfb;
    if (name == "xvnc")
        return ServerKind::Xvnc;
    if (name == "xorg")
        return ServerKind::Xorg;
    if (name == "sway")
        return ServerKind::Sway;
    throw std::runtime_error("MIRROR_TEST_SERVER is xvfb, xvnc, xorg or sway, not " + name);
}

std::vector<std::string> serverCommand(ServerKind kind, const ServerOptions &options) {
    if (kind != ServerKind::Xvfb && has(options.extraArguments, "-screen"))
        skipTest("it has one screen");
    if (kind != ServerKind::Xvfb && has(options.extraArguments, "-reset"))
        skipTest("it ends instead of resetting, or loses its size between two xrandr commands");
    std::vector<std::string> command;
    if (kind == ServerKind::Xvfb)
        command = {"Xvfb", "-screen", "0", bySize(options) + "x" + std::to_string(options.depth)};
    else
        command = kind == ServerKind::Xvnc ? xvnc(options) : xorg(options);
    for (const char *word : {"-displayfd", "1", "-nolisten", "tcp", "-noreset"})
        command.emplace_back(word);
    command.insert(command.end(), options.extraArguments.begin(), options.extraArguments.end());
    return command;
}

std::vector<std::vector<std::string>> commandsForSize(ServerKind kind,
                                                      const ServerOptions &options) {
    if (kind != ServerKind::Xorg)
        return {};
    const std::string mode = "test" + bySize(options);
    // The mode's clock; then, for each direction, its size, the start and end of its
    // synchronisation, and its total.
    std::vector<std::string> newMode = {"xrandr", "--newmode", mode, "100"};
    for (const int length : {options.width, options.height})
        for (const int more : {0, 1, 2, 3})
            newMode.push_back(std::to_string(length + more));
    return {newMode,
            {"xrandr", "--addmode", "DUMMY0", mode},
            {"xrandr", "--output", "DUMMY0", "--mode", mode},
            // Without a primary output, as on the other servers, monitors are listed in order of
            // creation.
            {"xrandr", "--noprimary"}};
}

} // namespace test
