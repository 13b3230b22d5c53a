#include "bench/bareScreen.h"

#include "protocols/wlr-screencopy-unstable-v1-client-protocol.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

namespace bench {

namespace {

void require(bool condition) {
    if (condition)
        return;
    std::fputs("no screen to read\n", stderr);
    std::exit(1);
}

int makeFile(std::size_t bytes) {
    const int file = memfd_create("bare screen", MFD_CLOEXEC);
    require(file >= 0 && ftruncate(file, static_cast<off_t>(bytes)) == 0);
    return file;
}

} // namespace

struct BareScreen::XServer {
    XServer(const ScreenSize &size, int file) : size(size) {
        require(xcb_connection_has_error(connection) == 0);
        root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
        segment = xcb_generate_id(connection);
        xcb_shm_attach_fd(connection, segment, file, 0);
    }
    ~XServer() { xcb_disconnect(connection); }
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    void read() const {
        std::free(xcb_shm_get_image_reply(
            connection,
            xcb_shm_get_image(connection, root, 0, 0, static_cast<std::uint16_t>(size.width),
                              static_cast<std::uint16_t>(size.height), ~0u,
                              XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0),
            nullptr));
    }

    const ScreenSize size;
    xcb_connection_t *const connection = xcb_connect(nullptr, nullptr);
    xcb_window_t root = 0;
    xcb_shm_seg_t segment = 0;
};

// Its objects go with the connection.
struct BareScreen::Compositor {
    Compositor(const ScreenSize &size, int file) {
        require(display != nullptr);
        static const wl_registry_listener listener = {
            .global =
                [](void *self, wl_registry *all, std::uint32_t global, const char *interface,
                   std::uint32_t) {
                    auto &bound = *static_cast<Compositor *>(self);
                    const auto bind = [&](auto *&object, const wl_interface &type,
                                          std::uint32_t version) {
                        if (std::strcmp(interface, type.name) == 0 && object == nullptr)
                            object = static_cast<std::remove_reference_t<decltype(object)>>(
                                wl_registry_bind(all, global, &type, version));
                    };
                    bind(bound.shared, wl_shm_interface, 1);
                    bind(bound.output, wl_output_interface, 1);
                    bind(bound.copies, zwlr_screencopy_manager_v1_interface, 3);
                },
            .global_remove = [](void *, wl_registry *, std::uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(display), &listener, this);
        wl_display_roundtrip(display);
        require(shared != nullptr && output != nullptr && copies != nullptr);
        wl_shm_pool *pool = wl_shm_create_pool(shared, file, static_cast<int>(size.bytes()));
        buffer = wl_shm_pool_create_buffer(pool, 0, size.width, size.height, size.width * 4,
                                           WL_SHM_FORMAT_XRGB8888);
    }
    ~Compositor() { wl_display_disconnect(display); }
    Compositor(const Compositor &) = delete;
    Compositor &operator=(const Compositor &) = delete;

    void read() {
        static const zwlr_screencopy_frame_v1_listener listener = {
            .buffer = [](void *, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t,
                         std::uint32_t, std::uint32_t) {},
            .flags = [](void *, zwlr_screencopy_frame_v1 *, std::uint32_t) {},
            .ready = [](void *self, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t,
                        std::uint32_t) { static_cast<Compositor *>(self)->ready = true; },
            .failed = [](void *, zwlr_screencopy_frame_v1 *) { require(false); },
            .damage = [](void *, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t,
                         std::uint32_t, std::uint32_t) {},
            .linux_dmabuf = [](void *, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t,
                               std::uint32_t) {},
            .buffer_done =
                [](void *self, zwlr_screencopy_frame_v1 *frame) {
                    zwlr_screencopy_frame_v1_copy_with_damage(
                        frame, static_cast<Compositor *>(self)->buffer);
                }};
        zwlr_screencopy_frame_v1 *frame =
            zwlr_screencopy_manager_v1_capture_output(copies, 0, output);
        zwlr_screencopy_frame_v1_add_listener(frame, &listener, this);
        for (ready = false; !ready;)
            require(wl_display_dispatch(display) >= 0);
        zwlr_screencopy_frame_v1_destroy(frame);
    }

    wl_display *const display = wl_display_connect(nullptr);
    wl_shm *shared = nullptr;
    wl_output *output = nullptr;
    zwlr_screencopy_manager_v1 *copies = nullptr;
    wl_buffer *buffer = nullptr;
    bool ready = false;
};

BareScreen::BareScreen(const ScreenSize &size) {
    const int file = makeFile(size.bytes());
    memory =
        mmap(nullptr, size.bytes(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, file, 0);
    if (std::getenv("WAYLAND_DISPLAY") != nullptr)
        compositor = std::make_unique<Compositor>(size, file);
    else
        server = std::make_unique<XServer>(size, file);
}

BareScreen::~BareScreen() = default;

void BareScreen::read() {
    compositor ? compositor->read() : server->read();
}

} // namespace bench
