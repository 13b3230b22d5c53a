// sway without a screen, seat or graphics card: the Wayland compositor that tests draw on.
#pragma once

#include "tests/support/files.h"
#include "tests/support/process.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace test {

// Ended by the destructor, and by the kernel when the test's process dies. It runs as nobody when
// the test runs as root, since it refuses that.
class SwayServer {
public:
    // Skips the test when sway is not installed. The lines are added to its configuration.
    SwayServer(int width, int height, const std::vector<std::string> &lines);
    ~SwayServer();
    SwayServer(const SwayServer &) = delete;
    SwayServer &operator=(const SwayServer &) = delete;

    // Returns once its output is there. Throws std::runtime_error when that fails.
    void start();
    void kill();

    pid_t pid() const { return server ? server->pid() : -1; }

    // The path of its socket, the same after each start.
    std::string socket() const { return folder.file("wayland-1"); }

    // The variables with which programs find it, and nothing else, as Process takes them.
    std::map<std::string, std::string> variables() const;

private:
    const Folder folder; // its run-time folder
    std::optional<Process> server;
};

} // namespace test
