// The client side of the Wayland protocols, over a libwayland-client that is loaded when needed.
//
// Include this in place of <wayland-client.h>: the generated headers then call the loaded library's
// functions. The protocols' interfaces are compiled into this platform.
#pragma once

#include <wayland-client-core.h>

namespace platform::wayland {

// All functions that are used, by name. Each also needs a line below.
#define MIRROR_WAYLAND_FUNCTIONS(function)                                                         \
    function(wl_display_cancel_read);                                                              \
    function(wl_display_connect_to_fd);                                                            \
    function(wl_display_disconnect);                                                               \
    function(wl_display_dispatch_pending);                                                         \
    function(wl_display_flush);                                                                    \
    function(wl_display_prepare_read);                                                             \
    function(wl_display_read_events);                                                              \
    function(wl_log_set_handler_client);                                                           \
    function(wl_proxy_add_listener);                                                               \
    function(wl_proxy_destroy);                                                                    \
    function(wl_proxy_get_version);                                                                \
    function(wl_proxy_marshal_flags)

struct LibraryFunctions {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a declared name cannot be in parentheses
#define MIRROR_WAYLAND_POINTER(name) decltype(&::name) name = nullptr
    MIRROR_WAYLAND_FUNCTIONS(MIRROR_WAYLAND_POINTER);
#undef MIRROR_WAYLAND_POINTER
};

// Set from the first use of the library on.
extern LibraryFunctions libraryFunctions;

// A use of the library. The first one loads it; it is unloaded together with this platform. It
// cannot be unloaded sooner: a stream may be stopped by another thread than the one that unloads
// the platform, which then waits for that thread and holds the dynamic linker's lock meanwhile.
//
// For the same reason, the first use is on a host's thread. Any thread otherwise.
class Library {
public:
    Library();
    ~Library();
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    // False when the library is not installed or too old; then it must not be used.
    bool isLoaded() const { return loaded; }

private:
    bool loaded = false;
};

} // namespace platform::wayland

#define wl_display_cancel_read platform::wayland::libraryFunctions.wl_display_cancel_read
#define wl_display_connect_to_fd platform::wayland::libraryFunctions.wl_display_connect_to_fd
#define wl_display_disconnect platform::wayland::libraryFunctions.wl_display_disconnect
#define wl_display_dispatch_pending platform::wayland::libraryFunctions.wl_display_dispatch_pending
#define wl_display_flush platform::wayland::libraryFunctions.wl_display_flush
#define wl_display_prepare_read platform::wayland::libraryFunctions.wl_display_prepare_read
#define wl_display_read_events platform::wayland::libraryFunctions.wl_display_read_events
#define wl_log_set_handler_client platform::wayland::libraryFunctions.wl_log_set_handler_client
#define wl_proxy_add_listener platform::wayland::libraryFunctions.wl_proxy_add_listener
#define wl_proxy_destroy platform::wayland::libraryFunctions.wl_proxy_destroy
#define wl_proxy_get_version platform::wayland::libraryFunctions.wl_proxy_get_version
#define wl_proxy_marshal_flags platform::wayland::libraryFunctions.wl_proxy_marshal_flags

// These need the names above.
#include "protocols/wayland-client-protocol.h"
#include "protocols/wlr-screencopy-unstable-v1-client-protocol.h"
#include "protocols/xdg-output-unstable-v1-client-protocol.h"
