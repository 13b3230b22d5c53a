// The minimum work of a capture: reads the whole screen into shared memory.
#pragma once

#include "bench/scene.h"

#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

namespace bench {

// Releases nothing: lives until the process ends.
class BareScreen {
public:
    // Connects to the server that DISPLAY names.
    explicit BareScreen(const ScreenSize &size)
        : size(size), connection(xcb_connect(nullptr, nullptr)),
          root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root),
          segment(xcb_generate_id(connection)) {
        const int file = memfd_create("bare screen", MFD_CLOEXEC);
        const int resized = ftruncate(file, static_cast<off_t>(size.bytes()));
        memory = mmap(nullptr, size.bytes(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE,
                      resized == 0 ? file : -1, 0);
        xcb_shm_attach_fd(connection, segment, file, 0);
    }

    void read() {
        std::free(xcb_shm_get_image_reply(
            connection,
            xcb_shm_get_image(connection, root, 0, 0, static_cast<std::uint16_t>(size.width),
                              static_cast<std::uint16_t>(size.height), ~0u,
                              XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0),
            nullptr));
    }

    const void *pixels() const { return memory; }

private:
    const ScreenSize size;
    xcb_connection_t *connection;
    xcb_window_t root;
    xcb_shm_seg_t segment;
    void *memory = nullptr;
};

} // namespace bench
