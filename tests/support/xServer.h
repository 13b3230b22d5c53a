// Which display server the tests draw on, and how an X server is started.
//
// MIRROR_TEST_SERVER names it: xvfb (the default), xvnc, xorg, which uses the dummy driver and
// needs root, or sway, a Wayland compositor.
#pragma once

#include <string>
#include <vector>

namespace test {

enum class ServerKind { Xvfb, Xvnc, Xorg, Sway };

// Throws std::runtime_error when the variable names none of them.
ServerKind serverKind();

// Ends the process. ctest takes the test as skipped; it runs one test per process.
[[noreturn]] void skipTest(const std::string &reason);

struct ServerOptions {
    int width = 0;
    int height = 0;
    int depth = 0;
    std::vector<std::string> extraArguments;
};

// The command that starts such a server, without the display's name. The server writes a line to
// standard output once it is ready. Skips the test if this kind of server cannot fulfil `options`.
std::vector<std::string> serverCommand(ServerKind kind, const ServerOptions &options);

// The commands to run on the server to give its screen the size in `options`.
std::vector<std::vector<std::string>> commandsForSize(ServerKind kind,
                                                      const ServerOptions &options);

} // namespace test
