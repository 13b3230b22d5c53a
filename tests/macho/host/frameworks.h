// The frameworks' calls that the library imports, over an X server.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

void addX11Frameworks(Imports &imports);

} // namespace macho
