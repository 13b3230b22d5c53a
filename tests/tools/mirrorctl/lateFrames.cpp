// Preloaded before XCB: delays the first picture that is read through shared memory by LATE_FRAMES
// milliseconds, like a busy server.
#include <cstdlib>
#include <dlfcn.h>
#include <poll.h>
#include <xcb/shm.h>

extern "C" xcb_shm_get_image_reply_t *xcb_shm_get_image_reply(xcb_connection_t *connection,
                                                              xcb_shm_get_image_cookie_t cookie,
                                                              xcb_generic_error_t **error) {
    static bool isFirst = true;
    const char *delay = std::getenv("LATE_FRAMES");
    if (isFirst && delay != nullptr)
        poll(nullptr, 0, std::atoi(delay));
    isFirst = false;
    using Function = decltype(&xcb_shm_get_image_reply);
    static const auto real =
        reinterpret_cast<Function>(dlsym(RTLD_NEXT, "xcb_shm_get_image_reply"));
    return real(connection, cookie, error);
}
