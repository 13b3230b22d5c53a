// A Wayland compositor as the source of displays and frames.
#pragma once

#include "platform/objects/source.h"

namespace platform::wayland {

extern const Source displaySource;

} // namespace platform::wayland
