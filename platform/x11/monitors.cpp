#include "platform/x11/monitors.h"

#include "platform/objects/displayIds.h"
#include "platform/x11/replies.h"

#include <algorithm>
#include <string>
#include <xcb/randr.h>

namespace platform::x11 {

// Eight 8K screens in one. A larger monitor is implausible and would need more than a gigabyte.
static constexpr std::uint32_t maxPixels = 1u << 28;

std::optional<std::vector<Monitor>> listMonitors(Connection &connection) {
    xcb_connection_t *xcb = connection.get();
    if (!connection.has(xcb_randr_id))
        return std::nullopt;
    const auto versionCookie = xcb_randr_query_version(xcb, 1, 5);
    const auto monitorsCookie = xcb_randr_get_monitors(xcb, connection.root(), 1);
    const Reply<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(xcb, versionCookie, nullptr));
    const Reply<xcb_randr_get_monitors_reply_t> reply(
        xcb_randr_get_monitors_reply(xcb, monitorsCookie, nullptr));
    connection.extendWatch();
    const bool known = version && (version->major_version > 1 || version->minor_version >= 5) &&
                       reply && isWhole(*reply);
    if (!known)
        return std::nullopt;

    std::vector<Monitor> monitors;
    std::vector<xcb_get_atom_name_cookie_t> cookies;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        const xcb_randr_monitor_info_t &info = *each.data;
        const std::uint32_t pixels = std::uint32_t{info.width} * info.height;
        if (pixels == 0 || pixels > maxPixels)
            continue;
        monitors.push_back({0, {info.x, info.y, info.width, info.height}});
        cookies.push_back(xcb_get_atom_name(xcb, info.name));
    }

    std::vector<std::string> names;
    for (const auto cookie : cookies) {
        const Reply<xcb_get_atom_name_reply_t> name(xcb_get_atom_name_reply(xcb, cookie, nullptr));
        if (name && isWhole(*name))
            names.emplace_back(xcb_get_atom_name_name(name.get()),
                               static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get())));
        else if (connection.failed())
            return std::nullopt;
        else
            names.emplace_back();
    }
    connection.extendWatch();
    // Different screens of a server often have monitors with the same name. A zero byte separates
    // the screen's number, since no name contains one.
    if (connection.screenNumber() > 0)
        for (std::string &name : names)
            name += '\0' + std::to_string(connection.screenNumber());
    const std::vector<std::uint32_t> ids = displayIdsOf(names);
    for (std::size_t i = 0; i < monitors.size(); ++i)
        monitors[i].id = ids[i];
    return monitors;
}

std::optional<Monitor> findMonitor(const std::vector<Monitor> &monitors, std::uint32_t id) {
    const auto found = std::find_if(monitors.begin(), monitors.end(),
                                    [id](const Monitor &monitor) { return monitor.id == id; });
    return found == monitors.end() ? std::nullopt : std::optional(*found);
}

void watchMonitors(Connection &connection) {
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &events);
    xcb_randr_select_input(connection.get(), connection.root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
}

} // namespace platform::x11
