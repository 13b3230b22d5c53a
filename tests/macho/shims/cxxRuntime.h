// The C++ runtime of macOS over LLVM's for this system, which has the same functions over the same
// types, but for those that hold something of the C library's.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

void addCxxRuntime(Imports &imports);

} // namespace macho
