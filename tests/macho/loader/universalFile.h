// Files that hold one image for each of several processors.
#pragma once

#include "tests/macho/loader/byteReader.h"

namespace macho {

// The x86-64 part of a universal file; any other file as it is. Throws a LoadError when a
// universal file has no such part.
Bytes x86Part(Bytes bytes);

} // namespace macho
