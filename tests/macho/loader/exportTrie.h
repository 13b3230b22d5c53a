// The symbols that an image offers, packed as a tree of prefixes.
#pragma once

#include "tests/macho/loader/imageFile.h"

#include <cstdint>
#include <map>
#include <string>

namespace macho {

// Symbols, with their leading underscore, and their addresses in the image. Throws LoadError.
std::map<std::string, std::uint64_t> exportsOf(const ImageFile &file);

} // namespace macho
