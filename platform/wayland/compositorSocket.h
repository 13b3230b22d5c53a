// Opens the socket to the compositor that WAYLAND_DISPLAY names, without any library of Wayland's.
#pragma once

#include "platform/objects/descriptor.h"

namespace platform::wayland {

struct CompositorSocket {
    Descriptor descriptor; // invalid when there is no compositor, or when it is silent
    bool silent = false;   // there is a compositor, but its queue of connections to accept is full
};

// Any thread; never waits. WAYLAND_DISPLAY is a path, or a name in the folder XDG_RUNTIME_DIR;
// unset it means wayland-0. WAYLAND_SOCKET, a connection that the host was started with, is the
// host's.
CompositorSocket openCompositorSocket();

// Whether there is a compositor, silent or not.
bool isCompositorThere();

} // namespace platform::wayland
