#include "tools/mirrorctl/doctor/doctor.h"

#include "platform/objects/signals.h"
#include "platform/wayland/compositor.h"
#include "platform/wayland/pixelMemory.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string_view>

// The generated header is for C, where this is an ordinary name.
#define namespace nameSpace
#include "protocols/wlr-layer-shell-unstable-v1-client-protocol.h"
#undef namespace

namespace mirrorctl {

using platform::wayland::Compositor;
using platform::wayland::Output;
using platform::wayland::PixelMemory;
using platform::wayland::Proxy;

namespace {

// A surface above all windows of one output. First it covers the output without any pixels, to
// learn how large that is in the compositor's own units, which may be several pixels each.
struct Overlay {
    std::unique_ptr<Compositor> compositor = Compositor::open();
    Proxy<wl_registry> registry;
    wl_compositor *surfaces = nullptr;
    zwlr_layer_shell_v1 *layers = nullptr;
    wl_surface *surface = nullptr;
    zwlr_layer_surface_v1 *place = nullptr;
    std::optional<PixelMemory> pixels;

    std::uint32_t width = 0; // by the last configuration; 0: not configured, or closed
    std::uint32_t height = 0;

    Overlay() = default;
    ~Overlay();
    Overlay(const Overlay &) = delete;
    Overlay &operator=(const Overlay &) = delete;

    bool canDraw();
    bool cover(wl_output *output);
    bool shrink(double pixelsPerUnit, std::uint32_t colour);

private:
    bool awaitSize();
};

} // namespace

static const wl_registry_listener registryListener = {
    .global =
        [](void *self, wl_registry *all, std::uint32_t global, const char *interface,
           std::uint32_t) {
            auto &overlay = *static_cast<Overlay *>(self);
            const auto bind = [&](auto *&object, const wl_interface &type) {
                if (object == nullptr && std::string_view(interface) == type.name)
                    object = static_cast<std::remove_reference_t<decltype(object)>>(
                        wl_registry_bind(all, global, &type, 1));
            };
            bind(overlay.surfaces, wl_compositor_interface);
            bind(overlay.layers, zwlr_layer_shell_v1_interface);
        },
    .global_remove = [](void *, wl_registry *, std::uint32_t) {}};

static const zwlr_layer_surface_v1_listener placeListener = {
    .configure =
        [](void *self, zwlr_layer_surface_v1 *place, std::uint32_t serial, std::uint32_t width,
           std::uint32_t height) {
            static_cast<Overlay *>(self)->width = width;
            static_cast<Overlay *>(self)->height = height;
            zwlr_layer_surface_v1_ack_configure(place, serial);
        },
    .closed = [](void *self, zwlr_layer_surface_v1 *) { static_cast<Overlay *>(self)->width = 0; }};

Overlay::~Overlay() {
    const platform::SigpipeGuard guard;
    if (place != nullptr)
        zwlr_layer_surface_v1_destroy(place);
    if (surface != nullptr)
        wl_surface_destroy(surface);
    // The first version of this object has no request that ends it.
    if (layers != nullptr)
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(layers));
    if (surfaces != nullptr)
        wl_compositor_destroy(surfaces);
    // Returns when the compositor shows it no more; it goes with the connection in any case.
    if (compositor)
        compositor->connection().roundTrip();
}

bool Overlay::canDraw() {
    registry.reset(wl_display_get_registry(compositor->connection().get()));
    return registry && wl_registry_add_listener(registry.get(), &registryListener, this) == 0 &&
           compositor->connection().roundTrip() && surfaces != nullptr && layers != nullptr &&
           compositor->sharedMemory() != nullptr;
}

bool Overlay::awaitSize() {
    width = 0;
    wl_surface_commit(surface);
    return compositor->connection().wait([this] { return width != 0 && height != 0; });
}

bool Overlay::cover(wl_output *output) {
    surface = wl_compositor_create_surface(surfaces);
    if (surface == nullptr)
        return false;
    place = zwlr_layer_shell_v1_get_layer_surface(layers, surface, output,
                                                  ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "mirrorctl");
    if (place == nullptr || zwlr_layer_surface_v1_add_listener(place, &placeListener, this) != 0)
        return false;
    constexpr std::int32_t overBars = -1;
    zwlr_layer_surface_v1_set_exclusive_zone(place, overBars);
    zwlr_layer_surface_v1_set_anchor(
        place, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                   ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT);
    return awaitSize();
}

bool Overlay::shrink(double pixelsPerUnit, std::uint32_t colour) {
    const int margin = static_cast<int>(std::lround(ScreenMark::first / pixelsPerUnit));
    const int side = static_cast<int>(std::ceil(ScreenMark::side / pixelsPerUnit));
    zwlr_layer_surface_v1_set_size(place, static_cast<std::uint32_t>(side),
                                   static_cast<std::uint32_t>(side));
    zwlr_layer_surface_v1_set_anchor(place, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP |
                                                ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT);
    zwlr_layer_surface_v1_set_margin(place, margin, 0, 0, margin);
    if (!awaitSize())
        return false;
    const platform::wayland::PixelLayout layout{WL_SHM_FORMAT_XRGB8888, side, side,
                                                static_cast<std::size_t>(side) * 4};
    pixels.emplace(*compositor, layout.bytes());
    std::fill_n(reinterpret_cast<std::uint32_t *>(pixels->data()), layout.bytes() / 4, colour);
    wl_surface_attach(surface, pixels->bufferFor(layout), 0, 0);
    wl_surface_damage(surface, 0, 0, side, side);
    wl_surface_commit(surface);
    return compositor->connection().roundTrip();
}

ScreenMark drawMarkWayland(const Display &display, std::uint32_t colour) {
    const platform::SigpipeGuard guard;
    const auto overlay = std::make_shared<Overlay>();
    if (!overlay->compositor)
        return {"the compositor does not answer"};
    const Output *output = overlay->compositor->find(display.displayID);
    if (output == nullptr)
        return {"the display is gone"};
    wl_output *object = output->object.get();
    if (!overlay->canDraw())
        return {"the compositor has no wlr-layer-shell, with which programs draw above windows"};
    if (!overlay->cover(object) ||
        !overlay->shrink(static_cast<double>(display.width) / overlay->width, colour))
        return {"the compositor shows nothing above windows"};
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {{}, std::chrono::duration<double>(now).count(), overlay};
}

} // namespace mirrorctl
