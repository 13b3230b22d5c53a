#include "platform/x11/damageWatch.h"

namespace platform::x11 {

bool DamageWatch::isPossible(Connection &connection) {
    xcb_connection_t *xcb = connection.get();
    if (!connection.has(xcb_damage_id) || !connection.has(xcb_xfixes_id))
        return false;
    // Both extensions require a version query before they are used.
    const auto damageCookie = xcb_damage_query_version(xcb, 1, 1);
    const auto fixesCookie = xcb_xfixes_query_version(xcb, 2, 0);
    const Reply<xcb_damage_query_version_reply_t> damageVersion(
        xcb_damage_query_version_reply(xcb, damageCookie, nullptr));
    const Reply<xcb_xfixes_query_version_reply_t> fixesVersion(
        xcb_xfixes_query_version_reply(xcb, fixesCookie, nullptr));
    connection.extendWatch();
    return damageVersion && fixesVersion && fixesVersion->major_version >= 2;
}

// XCB has no extension data once the connection has failed.
static std::uint8_t firstEventOf(Connection &connection) {
    const auto *data = xcb_get_extension_data(connection.get(), &xcb_damage_id);
    return data == nullptr ? 0 : data->first_event;
}

DamageWatch::DamageWatch(Connection &connection)
    : connection(connection), firstEvent(firstEventOf(connection)),
      damage(xcb_generate_id(connection.get())), region(xcb_generate_id(connection.get())),
      extents(xcb_generate_id(connection.get())) {
    xcb_damage_create(connection.get(), damage, connection.root(),
                      XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_xfixes_create_region(connection.get(), region, 0, nullptr);
    xcb_xfixes_create_region(connection.get(), extents, 0, nullptr);
}

bool DamageWatch::isReport(const xcb_generic_event_t &event) const {
    return (event.response_type & 0x7f) == firstEvent + XCB_DAMAGE_NOTIFY;
}

void DamageWatch::ask() {
    xcb_connection_t *xcb = connection.get();
    xcb_damage_subtract(xcb, damage, XCB_NONE, region);
    // The region may have thousands of rectangles; only their bounding box is transferred.
    xcb_xfixes_region_extents(xcb, region, extents);
    asked = xcb_xfixes_fetch_region(xcb, extents);
}

Rect DamageWatch::answer() {
    const Reply<xcb_xfixes_fetch_region_reply_t> reply(
        xcb_xfixes_fetch_region_reply(connection.get(), asked, nullptr));
    if (!reply)
        return {};
    return {reply->extents.x, reply->extents.y, reply->extents.width, reply->extents.height};
}

} // namespace platform::x11
