// A separate Wayland session for one test, without a screen, with a real X server in it.
#pragma once

#include "tests/support/process.h"

#include <string>

namespace test {

// Ends with the destructor, and with the test's process.
class WaylandSession {
public:
    // Throws std::runtime_error with the session's output when it does not start.
    WaylandSession();
    ~WaylandSession();
    WaylandSession(const WaylandSession &) = delete;
    WaylandSession &operator=(const WaylandSession &) = delete;

    // The name of the session's X server, which shows the windows of X programs only.
    const std::string &display() const { return name; }

private:
    Process session;
    std::string name;
};

} // namespace test
