// Which X server a test run draws on, and how that one is started.
//
// MIRROR_TEST_SERVER names it: xvfb (the default), xvnc, or xorg, which has the dummy driver and
// needs root.
#pragma once

#include <string>
#include <vector>

namespace test {

enum class ServerKind { Xvfb, Xvnc, Xorg };

// Throws std::runtime_error when the variable names none of them.
ServerKind serverKind();

struct ServerWish {
    int width = 0;
    int height = 0;
    int depth = 0;
    std::vector<std::string> extraArguments;
};

// The command that starts such a server, without the display's name; it writes a line to standard
// output once it is ready. Skips the test when this kind of server cannot do what is wished.
std::vector<std::string> serverCommand(ServerKind kind, const ServerWish &wish);

// What has to be run on the server before its screen is as wished.
std::vector<std::vector<std::string>> commandsForSize(ServerKind kind, const ServerWish &wish);

} // namespace test
