// Seeing the screen without lighting anything.
#pragma once

#include <cstdint>
#include <string>

namespace mirrorctl {

// A document that mirrors the display and lights nothing. Its one device, without which there is no
// run, has no panels; in palette mode a device is sent something only when one of its panels is
// due, so that this run sends nothing at all. Should it ever, it would be to this machine and about
// no panel. Palette mode also goes through its cycles, and answers captures, whatever the screen
// shows.
std::string documentWithoutLights(std::int32_t displayID);

} // namespace mirrorctl
