// std::mutex with the layout that it has on macOS.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

void addMutexes(Imports &imports);

} // namespace macho
