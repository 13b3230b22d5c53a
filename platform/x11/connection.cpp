#include "platform/x11/connection.h"

#include "platform/x11/handshake.h"
#include "platform/x11/replies.h"
#include "platform/x11/serverSocket.h"

#include <sys/socket.h>

namespace platform::x11 {

namespace {

struct Disconnect {
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};

using XcbConnection = std::unique_ptr<xcb_connection_t, Disconnect>;

XcbConnection shakeHands(ServerSocket &server) {
    xcb_auth_info_t authorisation{
        static_cast<int>(server.authorisationName.size()), server.authorisationName.data(),
        static_cast<int>(server.authorisationData.size()), server.authorisationData.data()};
    // From here on XCB owns the descriptor, also when this fails.
    return XcbConnection(xcb_connect_to_fd(
        server.descriptor.release(), server.authorisationName.empty() ? nullptr : &authorisation));
}

// The screen of this number; null when there is none.
const xcb_screen_t *screenOf(const xcb_setup_t &setup, int number) {
    if (!isWhole(setup))
        return nullptr;
    auto screens = xcb_setup_roots_iterator(&setup);
    for (; number > 0 && screens.rem > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

std::unique_ptr<Connection> Connection::open() {
    const Clock::time_point deadline = Clock::now() + serverPatience;
    // XCB does not distinguish a server that hangs up from one that refuses, and after a refusal a
    // retry is pointless. So a client of our own finds out, and stays connected until XCB is, too.
    Descriptor otherClient;
    for (;;) {
        ServerSocket server = openServerSocket(deadline);
        if (!server.descriptor.valid())
            return nullptr;
        auto watchdog = std::make_unique<Watchdog>(server.descriptor.get());
        XcbConnection connection = shakeHands(server);
        if (xcb_connection_has_error(connection.get()) == 0) {
            const xcb_screen_t *screen = screenOf(*xcb_get_setup(connection.get()), server.screen);
            if (screen == nullptr)
                return nullptr;
            std::unique_ptr<Connection> opened(
                new Connection(connection.get(), screen, server, std::move(watchdog)));
            static_cast<void>(connection.release()); // `opened` owns it
            opened->extendWatch(); // the handshake may have had to wait for a reset
            return opened;
        }
        if (otherClient.valid())
            return nullptr;
        otherClient = becomeClient(deadline);
        if (!otherClient.valid())
            return nullptr;
    }
}

Connection::Connection(xcb_connection_t *connection, const xcb_screen_t *screen,
                       const ServerSocket &server, std::unique_ptr<Watchdog> watchdog)
    : connection(connection), wantedScreen(screen), wantedNumber(server.screen),
      local(server.local), watchdog(std::move(watchdog)) {}

Connection::~Connection() {
    watchdog.reset();
    xcb_disconnect(connection);
}

bool Connection::has(xcb_extension_t &extension) {
    const xcb_query_extension_reply_t *data = xcb_get_extension_data(connection, &extension);
    extendWatch();
    return data != nullptr && data->present != 0;
}

std::optional<Rect> Connection::rootArea() {
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, root()), nullptr));
    extendWatch();
    if (!geometry)
        return std::nullopt;
    return Rect{0, 0, geometry->width, geometry->height};
}

void Connection::extendWatch() {
    if (watchdog)
        watchdog->extend();
}

void Connection::breakOff() const {
    shutdown(descriptor(), SHUT_RDWR);
}

} // namespace platform::x11
