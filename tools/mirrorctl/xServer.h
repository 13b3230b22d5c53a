// A connection to the X server that cannot hang its user.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <xcb/xcb.h>

namespace mirrorctl {

// Replies of XCB's are freed by free().
struct FreeReply {
    void operator()(void *reply) const;
};
template <typename Reply> using XReply = std::unique_ptr<Reply, FreeReply>;

// Lives for some seconds at most: then the connection is cut, and every call on it fails. One
// thread uses it; another watches the clock.
class XServer {
public:
    XServer();
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    bool isThere() const { return screen != nullptr; }
    xcb_connection_t *get() const { return connection; }
    const xcb_screen_t &root() const { return *screen; }

private:
    void watch();

    xcb_connection_t *connection = nullptr;
    const xcb_screen_t *screen = nullptr;
    std::mutex mutex;
    std::condition_variable ended;
    bool isOver = false; // guarded by mutex
    std::thread watcher;
};

} // namespace mirrorctl
