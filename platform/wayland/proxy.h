// Owners of the client's objects of the Wayland protocols.
#pragma once

#include "platform/wayland/client.h"

#include <memory>

namespace platform::wayland {

// Where the compositor keeps something for the object, it is told that this is no longer needed.
struct DestroyProxy {
    void operator()(wl_buffer *buffer) const;
    void operator()(wl_callback *callback) const;
    void operator()(wl_output *output) const;
    void operator()(wl_registry *registry) const;
    void operator()(wl_shm *memory) const;
    void operator()(wl_shm_pool *pool) const;
    void operator()(zwlr_screencopy_frame_v1 *frame) const;
    void operator()(zwlr_screencopy_manager_v1 *manager) const;
    void operator()(zxdg_output_manager_v1 *manager) const;
    void operator()(zxdg_output_v1 *output) const;
};

// Null when there was no memory for the object.
template <typename T> using Proxy = std::unique_ptr<T, DestroyProxy>;

} // namespace platform::wayland
