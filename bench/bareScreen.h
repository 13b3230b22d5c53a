// The minimum work of a capture: has the display server put the whole screen into shared memory.
#pragma once

#include "bench/scene.h"

#include <memory>

namespace bench {

// Used by one thread.
class BareScreen {
public:
    // Connects to the compositor that WAYLAND_DISPLAY names, or else to the X server that DISPLAY
    // names. Ends the program when there is none.
    explicit BareScreen(const ScreenSize &size);
    ~BareScreen();
    BareScreen(const BareScreen &) = delete;
    BareScreen &operator=(const BareScreen &) = delete;

    // An X server does it at once, and a compositor when the screen has changed since the last
    // time.
    void read();

    const void *pixels() const { return memory; }

private:
    struct XServer;
    struct Compositor;
    void *memory = nullptr;
    std::unique_ptr<XServer> server;
    std::unique_ptr<Compositor> compositor;
};

} // namespace bench
