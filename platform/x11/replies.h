// Whether what a server sent is as long as it says that it is.
//
// XCB hands out a reply with as many bytes as its length field names, and walks through the lists
// in it by their own counts. A server that is broken or malicious can make them disagree; XCB
// would then read on behind the reply. Pure functions.
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
