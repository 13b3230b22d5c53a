#include "tests/support/waylandBrush.h"

#include "protocols/viewporter-client-protocol.h"
#include "protocols/xdg-shell-client-protocol.h"

#include <algorithm>
#include <cstring>
#include <list>
#include <stdexcept>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace test {

namespace {

// One picture in memory that the compositor reads.
struct Sheet {
    wl_buffer *buffer = nullptr;
    std::uint32_t *pixels = nullptr;
    bool free = true; // the compositor does not read it
};

} // namespace

struct WaylandBrush::Window {
    explicit Window(const std::string &socket);
    ~Window();
    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;

    void require(bool condition) const;
    void roundTrip() { require(wl_display_roundtrip(display) >= 0); }
    Sheet &freeSheet();
    void show(int x, int y, int rectWidth, int rectHeight);
    void showAndWait();

    wl_display *display = nullptr;
    wl_registry *registry = nullptr;
    wl_compositor *compositor = nullptr;
    wl_shm *memory = nullptr;
    wl_output *output = nullptr;
    xdg_wm_base *shell = nullptr;
    wp_viewporter *viewporter = nullptr;
    wl_surface *surface = nullptr;
    wp_viewport *viewport = nullptr;
    xdg_surface *role = nullptr;
    xdg_toplevel *toplevel = nullptr;

    int modeWidth = 0;
    int modeHeight = 0;
    bool sideways = false;
    int width = 0; // of the picture
    int height = 0;
    std::vector<std::uint32_t> picture;
    std::list<Sheet> sheets;
    int wantedWidth = 0; // of the window, by the last configuration
    int wantedHeight = 0;
    bool shown = false;
    wl_callback *shownNext = nullptr; // the report of the next picture shown
    int shownPictures = 0;
};

void WaylandBrush::Window::require(bool condition) const {
    if (!condition)
        throw std::runtime_error("no Wayland compositor to draw on");
}

WaylandBrush::Window::Window(const std::string &socket)
    : display(wl_display_connect(socket.c_str())) {
    require(display != nullptr);
    static const wl_output_listener outputListener = {
        .geometry =
            [](void *self, wl_output *, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
               std::int32_t, const char *, const char *, std::int32_t transform) {
                static_cast<Window *>(self)->sideways = (transform & 1) != 0;
            },
        .mode =
            [](void *self, wl_output *, std::uint32_t, std::int32_t toWidth, std::int32_t toHeight,
               std::int32_t) {
                static_cast<Window *>(self)->modeWidth = toWidth;
                static_cast<Window *>(self)->modeHeight = toHeight;
            },
        .done = nullptr,
        .scale = nullptr,
        .name = nullptr,
        .description = nullptr,
    };
    static const xdg_wm_base_listener shellListener = {
        .ping = [](void *, xdg_wm_base *base, std::uint32_t serial) {
            xdg_wm_base_pong(base, serial);
        }};
    static const wl_registry_listener registryListener = {
        .global =
            [](void *self, wl_registry *all, std::uint32_t global, const char *interface,
               std::uint32_t) {
                auto &bound = *static_cast<Window *>(self);
                const std::string_view name = interface;
                const auto bind = [&](auto *&object, const wl_interface &type,
                                      std::uint32_t version) {
                    if (name == type.name && object == nullptr)
                        object = static_cast<std::remove_reference_t<decltype(object)>>(
                            wl_registry_bind(all, global, &type, version));
                };
                bind(bound.compositor, wl_compositor_interface, 4);
                bind(bound.memory, wl_shm_interface, 1);
                bind(bound.shell, xdg_wm_base_interface, 1);
                bind(bound.viewporter, wp_viewporter_interface, 1);
                bind(bound.output, wl_output_interface, 1);
            },
        .global_remove = [](void *, wl_registry *, std::uint32_t) {}};
    registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &registryListener, this);
    roundTrip();
    require(compositor && memory && shell && viewporter && output);
    wl_output_add_listener(output, &outputListener, this);
    xdg_wm_base_add_listener(shell, &shellListener, nullptr);
    roundTrip();
    width = sideways ? modeHeight : modeWidth;
    height = sideways ? modeWidth : modeHeight;
    require(width > 0 && height > 0);
    picture.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);

    static const xdg_surface_listener roleListener = {
        .configure = [](void *, xdg_surface *role_, std::uint32_t serial) {
            xdg_surface_ack_configure(role_, serial);
        }};
    static const xdg_toplevel_listener toplevelListener = {
        .configure =
            [](void *self, xdg_toplevel *, std::int32_t toWidth, std::int32_t toHeight,
               wl_array *) {
                static_cast<Window *>(self)->wantedWidth = toWidth;
                static_cast<Window *>(self)->wantedHeight = toHeight;
            },
        .close = [](void *, xdg_toplevel *) {},
        .configure_bounds = nullptr,
        .wm_capabilities = nullptr};
    surface = wl_compositor_create_surface(compositor);
    viewport = wp_viewporter_get_viewport(viewporter, surface);
    role = xdg_wm_base_get_xdg_surface(shell, surface);
    xdg_surface_add_listener(role, &roleListener, this);
    toplevel = xdg_surface_get_toplevel(role);
    xdg_toplevel_add_listener(toplevel, &toplevelListener, this);
    xdg_toplevel_set_fullscreen(toplevel, output);
    wl_surface_commit(surface);
    roundTrip();
    // The first configuration may be without a size; another one then follows when it is shown.
    showAndWait();
    while (wantedWidth == 0)
        require(wl_display_dispatch(display) >= 0);
    showAndWait();
}

WaylandBrush::Window::~Window() {
    const auto end = [](auto *object, auto destroy) {
        if (object != nullptr)
            destroy(object);
    };
    for (const Sheet &sheet : sheets) {
        wl_buffer_destroy(sheet.buffer);
        munmap(sheet.pixels, picture.size() * 4);
    }
    end(shownNext, wl_callback_destroy);
    end(toplevel, xdg_toplevel_destroy);
    end(role, xdg_surface_destroy);
    end(viewport, wp_viewport_destroy);
    end(surface, wl_surface_destroy);
    end(viewporter, wp_viewporter_destroy);
    end(shell, xdg_wm_base_destroy);
    end(output, wl_output_destroy);
    end(memory, wl_shm_destroy);
    end(compositor, wl_compositor_destroy);
    end(registry, wl_registry_destroy);
    if (display != nullptr)
        wl_display_disconnect(display);
}

Sheet &WaylandBrush::Window::freeSheet() {
    for (Sheet &sheet : sheets)
        if (sheet.free)
            return sheet;
    const std::size_t bytes = picture.size() * 4;
    const int file = memfd_create("sheet", MFD_CLOEXEC);
    require(file >= 0 && ftruncate(file, static_cast<off_t>(bytes)) == 0);
    void *pixels = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    require(pixels != MAP_FAILED);
    wl_shm_pool *pool = wl_shm_create_pool(memory, file, static_cast<int>(bytes));
    close(file);
    Sheet &sheet = sheets.emplace_back();
    sheet.pixels = static_cast<std::uint32_t *>(pixels);
    sheet.buffer =
        wl_shm_pool_create_buffer(pool, 0, width, height, width * 4, WL_SHM_FORMAT_XRGB8888);
    wl_shm_pool_destroy(pool);
    static const wl_buffer_listener listener = {.release = [](void *released, wl_buffer *) {
        static_cast<Sheet *>(released)->free = true;
    }};
    wl_buffer_add_listener(sheet.buffer, &listener, &sheet);
    return sheet;
}

// The picture covers the window, whose size may have changed with the output's.
void WaylandBrush::Window::show(int x, int y, int rectWidth, int rectHeight) {
    static const wl_callback_listener listener = {
        .done = [](void *self, wl_callback *callback, std::uint32_t) {
            auto &window = *static_cast<Window *>(self);
            ++window.shownPictures;
            window.shownNext = nullptr;
            wl_callback_destroy(callback);
        }};
    roundTrip();
    if (shownNext == nullptr) {
        shownNext = wl_surface_frame(surface);
        wl_callback_add_listener(shownNext, &listener, this);
    }
    Sheet &sheet = freeSheet();
    std::memcpy(sheet.pixels, picture.data(), picture.size() * 4);
    sheet.free = false;
    if (wantedWidth > 0)
        wp_viewport_set_destination(viewport, wantedWidth, wantedHeight);
    wl_surface_attach(surface, sheet.buffer, 0, 0);
    wl_surface_damage_buffer(surface, x, y, rectWidth, rectHeight);
    wl_surface_commit(surface);
}

void WaylandBrush::Window::showAndWait() {
    static const wl_callback_listener listener = {
        .done = [](void *isShown, wl_callback *callback, std::uint32_t) {
            *static_cast<bool *>(isShown) = true;
            wl_callback_destroy(callback);
        }};
    shown = false;
    wl_callback_add_listener(wl_surface_frame(surface), &listener, &shown);
    show(0, 0, width, height);
    while (!shown)
        require(wl_display_dispatch(display) >= 0);
}

WaylandBrush::WaylandBrush(const std::string &socket) : own(std::make_unique<Window>(socket)) {}

WaylandBrush::~WaylandBrush() = default;

int WaylandBrush::shownPictures() const {
    return own->shownPictures;
}

void WaylandBrush::fillRect(int x, int y, int rectWidth, int rectHeight, std::uint32_t colour) {
    const int right = std::min(x + rectWidth, own->width);
    const int bottom = std::min(y + rectHeight, own->height);
    for (int row = std::max(y, 0); row < bottom; ++row)
        for (int column = std::max(x, 0); column < right; ++column)
            own->picture[static_cast<std::size_t>(row) * static_cast<std::size_t>(own->width) +
                         static_cast<std::size_t>(column)] = colour;
    own->show(x, y, rectWidth, rectHeight);
    own->roundTrip();
}

void WaylandBrush::putPixels(int x, int y, int blockWidth, int blockHeight,
                             const std::uint32_t *colours) {
    const int columns = std::min(blockWidth, own->width - x);
    for (int row = 0; row < blockHeight && y + row < own->height; ++row)
        std::copy_n(colours + static_cast<std::ptrdiff_t>(row) * blockWidth, columns,
                    own->picture.begin() + static_cast<std::ptrdiff_t>(y + row) * own->width + x);
    own->show(x, y, blockWidth, blockHeight);
    own->roundTrip();
}

} // namespace test
