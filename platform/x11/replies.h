// Checks that the lists and names in a server's reply fit into it.
//
// XCB returns a reply with the number of bytes that its length field states, and iterates over the
// lists in it by their own counts. A broken or malicious server can make these disagree; XCB would
// then read beyond the reply. Pure functions.
#pragma once

#include <xcb/randr.h>
#include <xcb/xcb.h>

namespace platform::x11 {

// The pixmap formats, and the screens with all their depths and visuals.
bool isWhole(const xcb_setup_t &setup);

// The monitors with all their outputs.
bool isWhole(const xcb_randr_get_monitors_reply_t &reply);

// The name.
bool isWhole(const xcb_get_atom_name_reply_t &reply);

} // namespace platform::x11
