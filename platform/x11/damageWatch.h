// Reports when and where the root window has been drawn on.
#pragma once

#include "platform/x11/connection.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

namespace platform::x11 {

class DamageWatch {
public:
    // True when the server has the extensions that a watch needs.
    static bool isPossible(Connection &connection);

    // Reports drawing on the root window and everything in it, from now on. `connection` outlives
    // this object, and isPossible() was true for it.
    explicit DamageWatch(Connection &connection);
    DamageWatch(const DamageWatch &) = delete;
    DamageWatch &operator=(const DamageWatch &) = delete;

    // Whether an event reports drawing. It does not say where, and after one report the server
    // sends no other until the damage is taken, however much is drawn.
    bool isReport(const xcb_generic_event_t &event) const;

    // Takes the damage from the server. Later drawing is reported again, so call this before the
    // pixels are read. Does not wait; each ask() must be followed by an answer().
    void ask();
    // Waits for the reply: a rectangle around everything that was drawn; empty without a reply.
    Rect answer();

private:
    Connection &connection;
    std::uint8_t firstEvent;
    xcb_damage_damage_t damage;
    xcb_xfixes_region_t region;
    xcb_xfixes_region_t extents;
    xcb_xfixes_fetch_region_cookie_t asked{};
};

} // namespace platform::x11
