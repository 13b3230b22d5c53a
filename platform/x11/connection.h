// A connection to the X server that DISPLAY names.
//
// Used by one thread at a time, except for breakOff(). On a host thread every use, the destructor
// included, requires a SigpipeGuard.
#pragma once

#include "platform/objects/watchdog.h"
#include "platform/x11/rect.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

namespace platform::x11 {

struct ServerSocket;

struct FreeDeleter {
    void operator()(void *memory) const { std::free(memory); }
};

// A server's reply; null when the server sent an error or no reply.
template <typename T> using Reply = std::unique_ptr<T, FreeDeleter>;

class Connection {
public:
    // Null when there is no server or it refuses the connection; with a server that hangs up, as
    // during a reset, it retries for serverPatience. Until endWatch(), the connection fails if the
    // server takes longer than serverPatience for one step. Throws std::system_error when the
    // process is out of threads or descriptors.
    static std::unique_ptr<Connection> open();
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    xcb_connection_t *get() const { return connection; }
    const xcb_screen_t &screen() const { return *wantedScreen; }
    xcb_window_t root() const { return wantedScreen->root; }
    // The number of the server's screen that DISPLAY names, counted from 0.
    int screenNumber() const { return wantedNumber; }
    int descriptor() const { return xcb_get_file_descriptor(connection); }
    bool failed() const { return xcb_connection_has_error(connection) != 0; }
    // Whether descriptors can be passed to the server.
    bool isLocal() const { return local; }
    bool has(xcb_extension_t &extension);

    // The root window's current size; nothing when the server did not reply.
    std::optional<Rect> rootArea();

    // Call after each reply: the server has serverPatience for the next step.
    void extendWatch();
    // From here on the server has no time limit; another thread may call breakOff().
    void endWatch() { watchdog.reset(); }
    // Any thread: makes every call on the connection fail, also one that is waiting.
    void breakOff() const;

private:
    Connection(xcb_connection_t *connection, const xcb_screen_t *screen, const ServerSocket &server,
               std::unique_ptr<Watchdog> watchdog);

    xcb_connection_t *connection;
    const xcb_screen_t *wantedScreen;
    int wantedNumber;
    bool local;
    std::unique_ptr<Watchdog> watchdog;
};

} // namespace platform::x11
