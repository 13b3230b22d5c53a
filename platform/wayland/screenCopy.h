// One copy of an output's picture after another, by the protocol wlr-screencopy.
#pragma once

#include "platform/wayland/compositor.h"
#include "platform/wayland/pixelMemory.h"
#include "platform/wayland/proxy.h"

namespace platform::wayland {

// Used on the connection's thread. The state changes only in the calls below and while the
// connection dispatches.
class ScreenCopy {
public:
    enum class State {
        Idle,
        Asked,   // for the layout of the next copy
        Offered, // the layout is known, and can be read
        Copying, // the compositor copies now, or when something changes
        Ready,   // the memory holds the picture
        Failed,  // the compositor refuses, or its layout cannot be read; or it has gone
    };

    // The compositor outlives this object.
    explicit ScreenCopy(const Compositor &compositor) : compositor(compositor) {}
    ScreenCopy(const ScreenCopy &) = delete;
    ScreenCopy &operator=(const ScreenCopy &) = delete;

    State state() const { return now; }

    // From any state to Asked, or Failed.
    void ask(wl_output *output);

    // Once it is Offered: the layout of the pixels that the compositor will write.
    const PixelLayout &layout() const { return offered; }

    // From Offered to Copying. The memory belongs to the compositor until the copy is Ready or
    // Failed, or until it has been dropped and the compositor has answered after that.
    enum class When { Now, Changed };
    void copy(wl_buffer *memory, When when);

    // Once it is Ready: whether the first row in memory is the lowest one.
    bool isUpsideDown() const { return upsideDown; }

    // From any state to Idle.
    void drop();

private:
    void fail() { now = State::Failed; }

    static const zwlr_screencopy_frame_v1_listener listener;

    const Compositor &compositor;
    Proxy<zwlr_screencopy_frame_v1> frame;
    State now = State::Idle;
    bool hasOffer = false;
    PixelLayout offered;
    bool upsideDown = false;
};

} // namespace platform::wayland
