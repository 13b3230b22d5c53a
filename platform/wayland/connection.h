// A connection to the compositor.
//
// Nothing here blocks without limit: the library is only called where it cannot wait, and the waits
// are our own. Used by one thread at a time. The compositor's events arrive as calls of listeners,
// in dispatch() and the functions that wait; these throw nothing, since they are called from C.
#pragma once

#include "platform/objects/descriptor.h"
#include "platform/wayland/client.h"

#include <functional>
#include <memory>

namespace platform::wayland {

class Connection {
public:
    // Null when there is no compositor or no client library, or when the compositor accepts no
    // connections. Does not wait.
    static std::unique_ptr<Connection> open();
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    wl_display *get() const { return display; }
    // Readable when dispatch() has something to do.
    int descriptor() const { return fd; }

    // Sends the requests made so far, takes the events that have arrived, and sends the requests
    // made by their listeners. False when the compositor has gone or has found a mistake, from then
    // on for good.
    bool dispatch();

    // Sends the requests made so far.
    void flush() { wl_display_flush(display); }

    // Dispatches until the condition holds; false when it does not within serverPatience.
    bool wait(const std::function<bool()> &isOver);

    // Until the compositor has answered all requests made so far; false if it does not in time.
    bool roundTrip();

private:
    Connection(std::unique_ptr<Library> library, Descriptor socket);

    const std::unique_ptr<Library> library;
    const int fd; // the display owns it
    wl_display *const display;
    bool failed = false;
};

} // namespace platform::wayland
