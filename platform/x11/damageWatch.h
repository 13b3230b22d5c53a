// Tells when and where the root window has been drawn on.
#pragma once

#include "platform/x11/connection.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

namespace platform::x11 {

class DamageWatch {
public:
    // True when the server has what a watch needs.
    static bool isPossible(Connection &connection);

    // Reports drawing on the root window and everything in it, from now on. `connection` outlives
    // this object, and isPossible() was true for it.
    explicit DamageWatch(Connection &connection);
    DamageWatch(const DamageWatch &) = delete;
    DamageWatch &operator=(const DamageWatch &) = delete;

    // Whether an event says that something was drawn. It does not say where; and after one report
    // the server stays silent until the damage is taken or forgotten, however much is drawn.
    bool isReport(const xcb_generic_event_t &event) const;

    // Takes the damage off the server; what is drawn later is reported again, so this comes before
    // the pixels are read. Does not wait: each ask() is followed by an answer().
    void ask();
    // A rectangle around all that had been drawn on.
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
