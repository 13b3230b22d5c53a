#include "tools/mirrorctl/doctor/system.h"
#include "tools/mirrorctl/xServer.h"

#include <sys/time.h>
#include <vector>
#include <xcb/randr.h>

namespace mirrorctl {

// One mark: its window, and what was to be seen in its place. A root window that somebody has drawn
// on forgets what a window has covered.
struct CoveredPlace {
    std::int16_t x;
    std::int16_t y;
    xcb_window_t window;
    xcb_pixmap_t before;
};

struct ScreenMark::Windows {
    XServer server;
    std::vector<CoveredPlace> places;
};

static double wallClock() {
    timeval now;
    gettimeofday(&now, nullptr);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) / 1e6;
}

static std::uint32_t pixelOf(const XServer &server, std::uint32_t colour) {
    const auto channel = [&](int shift) {
        return static_cast<std::uint16_t>((colour >> shift & 0xFF) * 0x101);
    };
    const XReply<xcb_alloc_color_reply_t> reply(
        xcb_alloc_color_reply(server.get(),
                              xcb_alloc_color(server.get(), server.root().default_colormap,
                                              channel(16), channel(8), channel(0)),
                              nullptr));
    return reply ? reply->pixel : colour;
}

static constexpr auto squareSide = static_cast<std::uint16_t>(ScreenMark::side);

static CoveredPlace showAt(const XServer &server, int x, int y, std::uint32_t pixel) {
    xcb_connection_t *xcb = server.get();
    const CoveredPlace place{static_cast<std::int16_t>(x + ScreenMark::first),
                             static_cast<std::int16_t>(y + ScreenMark::first), xcb_generate_id(xcb),
                             xcb_generate_id(xcb)};
    const xcb_window_t root = server.root().root;
    xcb_create_pixmap(xcb, server.root().root_depth, place.before, root, squareSide, squareSide);
    const xcb_gcontext_t brush = xcb_generate_id(xcb);
    const std::uint32_t withInferiors[] = {XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    xcb_create_gc(xcb, brush, root, XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES,
                  withInferiors);
    xcb_copy_area(xcb, root, place.before, brush, place.x, place.y, 0, 0, squareSide, squareSide);
    xcb_free_gc(xcb, brush);

    const std::uint32_t values[] = {pixel, 1};
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, place.window, root, place.x, place.y, squareSide,
                      squareSide, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(xcb, place.window);
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(xcb, place.window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    return place;
}

// Drawing on the root leaves windows alone; those draw themselves again.
static void uncover(const XServer &server, const CoveredPlace &place) {
    xcb_connection_t *xcb = server.get();
    xcb_destroy_window(xcb, place.window);
    const xcb_gcontext_t brush = xcb_generate_id(xcb);
    const std::uint32_t noExposures = 0;
    xcb_create_gc(xcb, brush, server.root().root, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    xcb_copy_area(xcb, place.before, server.root().root, brush, 0, 0, place.x, place.y, squareSide,
                  squareSide);
    xcb_free_gc(xcb, brush);
    xcb_free_pixmap(xcb, place.before);
}

// An answer to this means that everything before has been done.
static bool isUpToDate(const XServer &server) {
    const XReply<xcb_get_input_focus_reply_t> done(
        xcb_get_input_focus_reply(server.get(), xcb_get_input_focus(server.get()), nullptr));
    return done != nullptr;
}

ScreenMark::ScreenMark(std::uint32_t width, std::uint32_t height, std::uint32_t colour)
    : windows(std::make_unique<Windows>()) {
    const XServer &server = windows->server;
    if (!server.isThere()) {
        why = "the X server does not answer";
        return;
    }
    const XReply<xcb_randr_get_monitors_reply_t> monitors(xcb_randr_get_monitors_reply(
        server.get(), xcb_randr_get_monitors(server.get(), server.root().root, 1), nullptr));
    if (!monitors) {
        why = "the X server does not list its monitors";
        return;
    }
    const std::uint32_t pixel = pixelOf(server, colour);
    for (auto each = xcb_randr_get_monitors_monitors_iterator(monitors.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each))
        if (each.data->width == width && each.data->height == height)
            windows->places.push_back(showAt(server, each.data->x, each.data->y, pixel));
    if (windows->places.empty())
        why = "no monitor has the display's size";
    else if (!isUpToDate(server))
        why = "the X server went away";
    time = wallClock();
}

ScreenMark::~ScreenMark() {
    for (const auto &place : windows->places)
        uncover(windows->server, place);
    if (!windows->places.empty())
        isUpToDate(windows->server);
}

} // namespace mirrorctl
