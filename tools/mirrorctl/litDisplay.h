// Whether a display shows anything but black, seen without the library.
#pragma once

#include <cstdint>

namespace mirrorctl {

// Whether a hundredth of the display's pixels or more are not nearly black; false when it cannot be
// told. Takes milliseconds, and two seconds at most.
bool isLit(std::uint32_t display);

} // namespace mirrorctl
