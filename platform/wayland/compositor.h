// A compositor as a client sees it: its outputs, and what is needed to capture them.
//
// Used by one thread at a time, like the connection in it.
#pragma once

#include "platform/wayland/connection.h"
#include "platform/wayland/proxy.h"

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace platform::wayland {

struct Output {
    std::uint32_t global = 0; // its number among the compositor's global objects
    Proxy<wl_output> object;
    Proxy<zxdg_output_v1> details; // only where the object itself does not tell its name
    std::string name;              // such as DP-1
    // How the picture is turned to get the pixels of the panel: a wl_output_transform.
    std::int32_t transform = WL_OUTPUT_TRANSFORM_NORMAL;
    // False while a change has been reported only in part.
    bool settled = false;
    // Counts reports of another mode or place: pixels offered before one may be of another size.
    int changes = 0;
};

class Compositor {
public:
    // Connects, and waits until all outputs are known, with a deadline for each step. Null when
    // there is no compositor, or when it does not answer. Throws std::bad_alloc.
    static std::unique_ptr<Compositor> open();
    Compositor(const Compositor &) = delete;
    Compositor &operator=(const Compositor &) = delete;

    Connection &connection() { return *link; }

    // The identifiers of the outputs that have a name, in the compositor's order.
    std::vector<std::uint32_t> displays() const;
    // Null when there is no such display. Valid until the next dispatch.
    const Output *find(std::uint32_t display) const;

    // Whether outputs have come, gone or changed since the last call.
    bool takeLayoutChange() { return std::exchange(layoutChanged, false); }

    // Null when the compositor does not offer them.
    wl_shm *sharedMemory() const { return memory.get(); }
    zwlr_screencopy_manager_v1 *screenCopies() const { return copies.get(); }

private:
    explicit Compositor(std::unique_ptr<Connection> connection);

    void add(std::uint32_t global, const std::string &interface, std::uint32_t version);
    void addOutput(std::uint32_t global, std::uint32_t version);
    void askForName(Output &output);
    void remove(std::uint32_t global);
    Output &change(wl_output *object);

    static const wl_registry_listener registryListener;
    static const wl_output_listener outputListener;
    static const zxdg_output_v1_listener detailsListener;

    const std::unique_ptr<Connection> link; // destroyed last
    Proxy<wl_registry> registry;
    Proxy<wl_shm> memory;
    Proxy<zwlr_screencopy_manager_v1> copies;
    Proxy<zxdg_output_manager_v1> detailsManager;
    std::list<Output> outputs;
    bool layoutChanged = false;
};

} // namespace platform::wayland
