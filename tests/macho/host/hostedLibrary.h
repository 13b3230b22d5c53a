// The macOS library over this system and an X server.
#pragma once

#include "tests/macho/loader/image.h"

namespace macho {

// Everything that the library may import.
const Imports &x11Imports();

} // namespace macho
