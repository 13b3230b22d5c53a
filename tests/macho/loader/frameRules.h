// Where a function of an image keeps its caller's registers: compact encodings put into DWARF's
// words.
#pragma once

#include "tests/macho/loader/compactUnwind.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace macho {

// The function is left as its own DWARF record says; the record's offset in __eh_frame.
std::optional<std::uint32_t> ownRecordOf(const UnwindEntry &entry);

// The instructions of a frame description for any place in the function's body. Throws LoadError
// when the encoding is unknown.
std::vector<std::uint8_t> frameRulesOf(const UnwindEntry &entry, const Mapping &mapping);

} // namespace macho
