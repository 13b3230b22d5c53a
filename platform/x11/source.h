// An X server as the source of displays and frames.
#pragma once

#include "platform/objects/source.h"

namespace platform::x11 {

extern const Source displaySource;

} // namespace platform::x11
