// Everything that the library may import. The frameworks are those that the program is linked with:
// the platform for X servers, or the recording frameworks.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

const Imports &libraryImports();

} // namespace macho
