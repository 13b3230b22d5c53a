#include "platform/wayland/connection.h"

#include "platform/objects/clock.h"
#include "platform/objects/wakeUp.h"
#include "platform/wayland/compositorSocket.h"
#include "platform/wayland/proxy.h"

#include <cerrno>
#include <poll.h>

namespace platform::wayland {

std::unique_ptr<Connection> Connection::open() {
    CompositorSocket compositor = openCompositorSocket();
    if (!compositor.descriptor.valid())
        return nullptr;
    auto library = std::make_unique<Library>();
    if (!library->isLoaded())
        return nullptr;
    std::unique_ptr<Connection> connection(
        new Connection(std::move(library), std::move(compositor.descriptor)));
    return connection->display == nullptr ? nullptr : std::move(connection);
}

// The library owns the socket also when it has no memory for the display.
Connection::Connection(std::unique_ptr<Library> library_, Descriptor socket)
    : library(std::move(library_)), fd(socket.release()), display(wl_display_connect_to_fd(fd)) {}

Connection::~Connection() {
    if (display != nullptr)
        wl_display_disconnect(display);
}

bool Connection::dispatch() {
    while (!failed && wl_display_prepare_read(display) != 0)
        failed = wl_display_dispatch_pending(display) < 0;
    if (failed)
        return false;
    // A compositor that has gone may have sent why, so what it sent is read all the same.
    wl_display_flush(display);
    const bool read = wl_display_read_events(display) == 0;
    const bool dispatched = wl_display_dispatch_pending(display) >= 0;
    const bool flushed = wl_display_flush(display) >= 0 || errno == EAGAIN;
    failed = !read || !dispatched || !flushed;
    return !failed;
}

bool Connection::wait(const std::function<bool()> &isOver) {
    const Clock::time_point deadline = Clock::now() + serverPatience;
    while (dispatch()) {
        if (isOver())
            return true;
        if (Clock::now() >= deadline || !waitUntilReady(fd, POLLIN, deadline))
            return false;
    }
    return false;
}

bool Connection::roundTrip() {
    bool answered = false;
    const Proxy<wl_callback> answer(wl_display_sync(display));
    const wl_callback_listener listener = {[](void *isAnswered, wl_callback *, std::uint32_t) {
        *static_cast<bool *>(isAnswered) = true;
    }};
    return answer && wl_callback_add_listener(answer.get(), &listener, &answered) == 0 &&
           wait([&answered] { return answered; });
}

} // namespace platform::wayland
