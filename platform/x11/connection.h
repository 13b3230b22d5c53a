// A connection to the X server that DISPLAY names.
//
// Used by one thread at a time, except for breakOff(). On a thread of the host every use, its end
// included, stands under a SigpipeGuard.
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

// What a server answered; null when it answered with an error or not at all.
template <typename T> using Reply = std::unique_ptr<T, FreeDeleter>;

class Connection {
public:
    // Null when there is no server or it does not let us in; one that hangs up, as in a reset, is
    // tried again for as long as serverPatience. While the watch is kept, each step of the server's
    // has serverPatience; then the connection fails. Throws std::system_error when the process is
    // out of threads or descriptors.
    static std::unique_ptr<Connection> open();
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    xcb_connection_t *get() const { return connection; }
    const xcb_screen_t &screen() const { return *wantedScreen; }
    xcb_window_t root() const { return wantedScreen->root; }
    // Of the screens of the server, the one that DISPLAY names, counted from 0.
    int screenNumber() const { return wantedNumber; }
    int descriptor() const { return xcb_get_file_descriptor(connection); }
    bool failed() const { return xcb_connection_has_error(connection) != 0; }
    // Descriptors can be passed to the server.
    bool isLocal() const { return local; }
    bool has(xcb_extension_t &extension);

    // The root window's size as it is now; nothing when the server did not answer.
    std::optional<Rect> rootArea();

    // The server has answered.
    void extendWatch();
    // From here on the server may take as long as it likes; someone else calls breakOff().
    void endWatch() { watchdog.reset(); }
    // Any thread: every call on the connection fails, also one that is waiting.
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
