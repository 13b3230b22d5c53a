// Everything that the library may import. Its frameworks are those that the program is linked with:
// the platform over an X server, or the recording ones.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

const Imports &libraryImports();

} // namespace macho
