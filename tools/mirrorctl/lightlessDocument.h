// Seeing the screen without lighting anything.
#pragma once

#include <cstdint>
#include <string>

namespace mirrorctl {

// A document that mirrors the display and lights nothing: its one device is this machine and has no
// panels, so that the run's datagrams do not leave the machine and name no panel to whoever may
// listen here. In match mode, which sends at a steady pace whatever the screen shows.
std::string documentWithoutLights(std::int32_t displayID);

} // namespace mirrorctl
