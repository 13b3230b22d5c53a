// A listening TCP socket.
#pragma once

#include "tools/panelwall/pipe.h"

#include <string>

namespace panelwall {

// Owns the descriptor. open() and the destructor belong to one thread, accept() to another, stop()
// to any.
class Listener {
public:
    // Throws std::system_error when no pipe can be made.
    Listener() = default;
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    // Binds and listens. What is wrong, in words and with the port, or nothing.
    std::string open(const std::string &address, int port);

    // The next connection's descriptor, or -1 after stop(). Waits.
    int accept();

    void stop();

    // "127.0.0.1:8060" or "[::1]:8060"; what a browser on this machine is told.
    const std::string &name() const { return boundName; }
    int fd() const { return descriptor; }

private:
    int descriptor = -1;
    Pipe stopping;
    std::string boundName;
};

} // namespace panelwall
