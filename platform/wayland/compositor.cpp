#include "platform/wayland/compositor.h"

#include "platform/objects/displayIds.h"

#include <algorithm>
#include <cstddef>

namespace platform::wayland {

namespace {

// The versions that are needed, and the newest ones whose events have listeners.
constexpr std::uint32_t oldestOutput = 2; // reports when a change is complete
constexpr std::uint32_t newestOutput = 4;
constexpr std::uint32_t namedOutput = 4;   // tells its own name
constexpr std::uint32_t oldestDetails = 2; // tell the output's name
constexpr std::uint32_t newestDetails = 3;
constexpr std::uint32_t screenCopy = 3; // with damage, and an end to the list of buffers

template <typename T>
Proxy<T> bind(wl_registry *registry, std::uint32_t global, const wl_interface &interface,
              std::uint32_t version) {
    return Proxy<T>(static_cast<T *>(wl_registry_bind(registry, global, &interface, version)));
}

void setName(Output &output, const char *name) noexcept {
    try {
        output.name = name;
    } catch (...) {
        // Out of memory: an output without a name is not listed.
    }
}

} // namespace

const wl_registry_listener Compositor::registryListener = {
    .global =
        [](void *compositor, wl_registry *, std::uint32_t global, const char *interface,
           std::uint32_t version) {
            try {
                static_cast<Compositor *>(compositor)->add(global, interface, version);
            } catch (...) {
                // Out of memory: as if the compositor did not have it.
            }
        },
    .global_remove =
        [](void *compositor, wl_registry *, std::uint32_t global) {
            static_cast<Compositor *>(compositor)->remove(global);
        },
};

const wl_output_listener Compositor::outputListener = {
    .geometry =
        [](void *compositor, wl_output *object, std::int32_t, std::int32_t, std::int32_t,
           std::int32_t, std::int32_t, const char *, const char *, std::int32_t transform) {
            Output &output = static_cast<Compositor *>(compositor)->change(object);
            output.transform = transform;
            output.settled = false;
            ++output.changes;
        },
    .mode =
        [](void *compositor, wl_output *object, std::uint32_t, std::int32_t, std::int32_t,
           std::int32_t) {
            Output &output = static_cast<Compositor *>(compositor)->change(object);
            output.settled = false;
            ++output.changes;
        },
    .done =
        [](void *compositor, wl_output *object) {
            static_cast<Compositor *>(compositor)->change(object).settled = true;
        },
    .scale = [](void *, wl_output *, std::int32_t) {},
    .name =
        [](void *compositor, wl_output *object, const char *name) {
            setName(static_cast<Compositor *>(compositor)->change(object), name);
        },
    .description = [](void *, wl_output *, const char *) {},
};

const zxdg_output_v1_listener Compositor::detailsListener = {
    .logical_position = [](void *, zxdg_output_v1 *, std::int32_t, std::int32_t) {},
    .logical_size = [](void *, zxdg_output_v1 *, std::int32_t, std::int32_t) {},
    .done = [](void *, zxdg_output_v1 *) {},
    .name =
        [](void *compositor_, zxdg_output_v1 *details, const char *name) {
            auto *compositor = static_cast<Compositor *>(compositor_);
            for (Output &output : compositor->outputs)
                if (output.details.get() == details)
                    setName(compositor->change(output.object.get()), name);
        },
    .description = [](void *, zxdg_output_v1 *, const char *) {},
};

std::unique_ptr<Compositor> Compositor::open() {
    std::unique_ptr<Connection> connection = Connection::open();
    if (!connection)
        return nullptr;
    std::unique_ptr<Compositor> compositor(new Compositor(std::move(connection)));
    // The first answer brings the global objects, the second one what the outputs tell of
    // themselves.
    if (!compositor->registry || !compositor->link->roundTrip() || !compositor->link->roundTrip())
        return nullptr;
    return compositor;
}

Compositor::Compositor(std::unique_ptr<Connection> connection)
    : link(std::move(connection)), registry(wl_display_get_registry(link->get())) {
    if (registry)
        wl_registry_add_listener(registry.get(), &registryListener, this);
}

void Compositor::add(std::uint32_t global, const std::string &interface, std::uint32_t version) {
    if (interface == wl_output_interface.name && version >= oldestOutput)
        addOutput(global, version);
    else if (interface == wl_shm_interface.name)
        memory = bind<wl_shm>(registry.get(), global, wl_shm_interface, 1);
    else if (interface == zwlr_screencopy_manager_v1_interface.name && version >= screenCopy)
        copies = bind<zwlr_screencopy_manager_v1>(registry.get(), global,
                                                  zwlr_screencopy_manager_v1_interface, screenCopy);
    else if (interface == zxdg_output_manager_v1_interface.name && version >= oldestDetails) {
        detailsManager =
            bind<zxdg_output_manager_v1>(registry.get(), global, zxdg_output_manager_v1_interface,
                                         std::min(version, newestDetails));
        for (Output &output : outputs)
            askForName(output);
    }
}

void Compositor::addOutput(std::uint32_t global, std::uint32_t version) {
    Output &output = outputs.emplace_back();
    output.global = global;
    output.object = bind<wl_output>(registry.get(), global, wl_output_interface,
                                    std::min(version, newestOutput));
    if (!output.object || wl_output_add_listener(output.object.get(), &outputListener, this) != 0) {
        outputs.pop_back();
        return;
    }
    askForName(output);
}

void Compositor::askForName(Output &output) {
    if (wl_output_get_version(output.object.get()) >= namedOutput || !detailsManager ||
        output.details)
        return;
    output.details.reset(
        zxdg_output_manager_v1_get_xdg_output(detailsManager.get(), output.object.get()));
    if (output.details)
        zxdg_output_v1_add_listener(output.details.get(), &detailsListener, this);
}

void Compositor::remove(std::uint32_t global) {
    if (std::erase_if(outputs, [global](const Output &each) { return each.global == global; }) > 0)
        layoutChanged = true;
}

Output &Compositor::change(wl_output *object) {
    layoutChanged = true;
    return *std::find_if(outputs.begin(), outputs.end(),
                         [object](const Output &each) { return each.object.get() == object; });
}

std::vector<std::uint32_t> Compositor::displays() const {
    std::vector<std::string> names;
    for (const Output &output : outputs)
        if (!output.name.empty())
            names.push_back(output.name);
    return displayIdsOf(names);
}

const Output *Compositor::find(std::uint32_t display) const {
    const std::vector<std::uint32_t> ids = displays();
    std::size_t index = 0;
    for (const Output &output : outputs)
        if (!output.name.empty() && ids[index++] == display)
            return &output;
    return nullptr;
}

} // namespace platform::wayland
