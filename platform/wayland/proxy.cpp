#include "platform/wayland/proxy.h"

namespace platform::wayland {

void DestroyProxy::operator()(wl_buffer *buffer) const {
    wl_buffer_destroy(buffer);
}

void DestroyProxy::operator()(wl_callback *callback) const {
    wl_callback_destroy(callback);
}

void DestroyProxy::operator()(wl_output *output) const {
    if (wl_output_get_version(output) >= WL_OUTPUT_RELEASE_SINCE_VERSION)
        wl_output_release(output);
    else
        wl_output_destroy(output);
}

void DestroyProxy::operator()(wl_registry *registry) const {
    wl_registry_destroy(registry);
}

void DestroyProxy::operator()(wl_shm *memory) const {
    wl_shm_destroy(memory);
}

void DestroyProxy::operator()(wl_shm_pool *pool) const {
    wl_shm_pool_destroy(pool);
}

void DestroyProxy::operator()(zwlr_screencopy_frame_v1 *frame) const {
    zwlr_screencopy_frame_v1_destroy(frame);
}

void DestroyProxy::operator()(zwlr_screencopy_manager_v1 *manager) const {
    zwlr_screencopy_manager_v1_destroy(manager);
}

void DestroyProxy::operator()(zxdg_output_manager_v1 *manager) const {
    zxdg_output_manager_v1_destroy(manager);
}

void DestroyProxy::operator()(zxdg_output_v1 *output) const {
    zxdg_output_v1_destroy(output);
}

} // namespace platform::wayland
