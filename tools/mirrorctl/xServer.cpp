#include "tools/mirrorctl/xServer.h"

#include <chrono>
#include <cstdlib>
#include <sys/socket.h>

namespace mirrorctl {

void FreeReply::operator()(void *reply) const {
    std::free(reply);
}

namespace {

// A connection being made; shared with the thread that makes it, which may stay behind.
struct Opening {
    std::mutex mutex;
    std::condition_variable made;
    xcb_connection_t *connection = nullptr; // guarded by mutex, as is the number of the screen
    int screen = 0;
};

} // namespace

static constexpr auto patience = std::chrono::seconds(4);

XServer::XServer() {
    const auto opening = std::make_shared<Opening>();
    std::thread([opening] {
        int number = 0;
        xcb_connection_t *made = xcb_connect(nullptr, &number);
        const std::lock_guard lock(opening->mutex);
        opening->connection = made;
        opening->screen = number;
        opening->made.notify_all();
    }).detach();
    {
        std::unique_lock lock(opening->mutex);
        if (!opening->made.wait_for(lock, patience, [&] { return opening->connection; }))
            return;
        connection = opening->connection;
    }
    if (xcb_connection_has_error(connection) != 0)
        return;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int number = opening->screen; number > 0 && screens.rem > 0; --number)
        xcb_screen_next(&screens);
    if (screens.rem > 0)
        screen = screens.data;
    watcher = std::thread([this] { watch(); });
}

XServer::~XServer() {
    {
        const std::lock_guard lock(mutex);
        isOver = true;
    }
    ended.notify_all();
    if (watcher.joinable())
        watcher.join();
    if (connection)
        xcb_disconnect(connection);
}

// The watcher's thread.
void XServer::watch() {
    std::unique_lock lock(mutex);
    if (!ended.wait_for(lock, patience, [this] { return isOver; }))
        shutdown(xcb_get_file_descriptor(connection), SHUT_RDWR);
}

} // namespace mirrorctl
