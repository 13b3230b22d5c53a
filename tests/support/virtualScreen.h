// A private display server for one test, and functions that draw on it.
#pragma once

#include "tests/support/process.h"
#include "tests/support/swayServer.h"
#include "tests/support/waylandBrush.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace test {

// Starts the server in the constructor and ends it in the destructor; the kernel ends it too when
// the test's process dies. Nothing here touches this process's variables unless use() is called.
//
// The server is an X server with its own display number, or sway with its own folder; xServer.h
// says which. On sway the extra arguments are lines of its configuration.
class VirtualScreen {
public:
    // Throws std::runtime_error when the server cannot be started or does not answer in time. Skips
    // the test when this kind of server cannot do what is wanted.
    VirtualScreen(int width, int height, int depth = 24,
                  const std::vector<std::string> &extraArguments = {});
    ~VirtualScreen();
    VirtualScreen(const VirtualScreen &) = delete;
    VirtualScreen &operator=(const VirtualScreen &) = delete;

    // The X server's name for clients, such as ":7".
    const std::string &display() const { return name; }
    pid_t pid() const;

    // Sets the variables of this process so that they name the server.
    void use() const;
    // The variables that name it, as Process takes them.
    std::map<std::string, std::string> variables() const;

    // Draw on the whole screen; return once the server has drawn. Colours are 0xRRGGBB.
    void fill(std::uint32_t colour);
    void fillRect(int x, int y, int width, int height, std::uint32_t colour);
    void putPixels(int x, int y, int width, int height, const std::uint32_t *colours);

    // How often the screen has changed by these. A compositor shows several drawings at once when
    // it is slower than they are.
    int changes() const;

    // For X servers: the name of the output that shows the screen, which xrandr takes.
    std::string output() const;

    // The name of its mode at present.
    std::string mode() const;

    // Runs a program as a client of the server and waits for it. Returns its output; throws
    // std::runtime_error with it unless the program exits with 0.
    std::string run(const std::vector<std::string> &command) const;

    // Closes this object's connection, so that the server has no clients but those under test.
    // Nothing can be drawn afterwards.
    void disconnect();

    // Kills the server (SIGKILL) and waits for its end. No other server takes over its name.
    void kill();

    // After kill(): another server under the same name. Throws as the constructor does.
    void restart();

private:
    void startSway();
    void startX();

    std::vector<std::string> extraArguments;
    std::string name;
    std::optional<Process> server;
    int reservation = -1;
    xcb_connection_t *connection = nullptr;
    std::uint32_t root = 0;
    std::uint32_t brush = 0;
    std::unique_ptr<SwayServer> sway;
    std::unique_ptr<WaylandBrush> waylandBrush;
    int drawings = 0; // on an X server
    int width = 0;
    int height = 0;
    int depth = 0;
};

// A virtual screen that is in use from the start.
class UsedScreen : public VirtualScreen {
public:
    UsedScreen(int width, int height, int depth = 24,
               const std::vector<std::string> &extraArguments = {})
        : VirtualScreen(width, height, depth, extraArguments) {
        use();
    }
};

} // namespace test
