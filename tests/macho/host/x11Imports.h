// Everything that the library may import, its calls of frameworks over an X server.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

const Imports &x11Imports();

} // namespace macho
