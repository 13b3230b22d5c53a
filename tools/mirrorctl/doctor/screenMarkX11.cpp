#include "tools/mirrorctl/doctor/doctor.h"

#include "platform/objects/signals.h"
#include "platform/x11/monitors.h"

#include <chrono>
#include <system_error>
#include <vector>

namespace mirrorctl {

using platform::x11::Connection;
using platform::x11::Reply;

// One mark: its window, and a copy of the area under it. If another program has drawn on the root
// window, the server does not restore the covered area.
struct CoveredPlace {
    std::int16_t x;
    std::int16_t y;
    xcb_window_t window;
    xcb_pixmap_t before;
};

struct Windows {
    std::unique_ptr<Connection> connection = Connection::open();
    std::vector<CoveredPlace> places;

    Windows() = default;
    ~Windows();
    Windows(const Windows &) = delete;
    Windows &operator=(const Windows &) = delete;
};

static std::uint32_t pixelOf(const Connection &connection, std::uint32_t colour) {
    const auto channel = [&](int shift) {
        return static_cast<std::uint16_t>((colour >> shift & 0xFF) * 0x101);
    };
    const Reply<xcb_alloc_color_reply_t> reply(xcb_alloc_color_reply(
        connection.get(),
        xcb_alloc_color(connection.get(), connection.screen().default_colormap, channel(16),
                        channel(8), channel(0)),
        nullptr));
    return reply ? reply->pixel : colour;
}

static constexpr auto squareSide = static_cast<std::uint16_t>(ScreenMark::side);

static CoveredPlace showAt(const Connection &connection, int x, int y, std::uint32_t pixel) {
    xcb_connection_t *xcb = connection.get();
    const CoveredPlace place{static_cast<std::int16_t>(x + ScreenMark::first),
                             static_cast<std::int16_t>(y + ScreenMark::first), xcb_generate_id(xcb),
                             xcb_generate_id(xcb)};
    const xcb_window_t root = connection.root();
    xcb_create_pixmap(xcb, connection.screen().root_depth, place.before, root, squareSide,
                      squareSide);
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

// Drawing on the root window does not touch other windows, which redraw themselves.
static void uncover(const Connection &connection, const CoveredPlace &place) {
    xcb_connection_t *xcb = connection.get();
    xcb_destroy_window(xcb, place.window);
    const xcb_gcontext_t brush = xcb_generate_id(xcb);
    const std::uint32_t noExposures = 0;
    xcb_create_gc(xcb, brush, connection.root(), XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    xcb_copy_area(xcb, place.before, connection.root(), brush, 0, 0, place.x, place.y, squareSide,
                  squareSide);
    xcb_free_gc(xcb, brush);
    xcb_free_pixmap(xcb, place.before);
}

// A reply means that the server has processed all earlier requests.
static bool isUpToDate(const Connection &connection) {
    const Reply<xcb_get_input_focus_reply_t> done(xcb_get_input_focus_reply(
        connection.get(), xcb_get_input_focus(connection.get()), nullptr));
    return done != nullptr;
}

// In every monitor of the display's size.
ScreenMark drawMarkX11(const Display &display, std::uint32_t colour) {
    const platform::SigpipeGuard guard;
    const auto windows = std::make_shared<Windows>();
    if (!windows->connection)
        return {"the X server does not answer"};
    Connection &connection = *windows->connection;
    const auto monitors = platform::x11::listMonitors(connection);
    if (!monitors)
        return {"the X server does not list its monitors"};
    const std::uint32_t pixel = pixelOf(connection, colour);
    for (const auto &[id, area] : *monitors)
        if (area.width == static_cast<int>(display.width) &&
            area.height == static_cast<int>(display.height))
            windows->places.push_back(showAt(connection, area.x, area.y, pixel));
    if (windows->places.empty())
        return {"no monitor has the display's size"};
    if (!isUpToDate(connection))
        return {"the X server went away"};
    connection.endWatch(); // no requests while the mark is shown
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {{}, std::chrono::duration<double>(now).count(), windows};
}

Windows::~Windows() {
    if (places.empty())
        return;
    const platform::SigpipeGuard guard;
    try {
        const platform::Watchdog watchdog(connection->descriptor());
        for (const auto &place : places)
            uncover(*connection, place);
        isUpToDate(*connection);
    } catch (const std::system_error &) {
        // Without a watchdog thread do not wait; the windows go when the connection closes.
    }
}

} // namespace mirrorctl
