// The manager over the stand-in display, made ready for one configuration after the other.
#pragma once

#include <cstddef>
#include <string>

namespace fuzz {

// As after loading the library, with one display of this identifier and size. What earlier
// configurations left behind is freed.
void setStage(unsigned displayID, std::size_t width, std::size_t height, std::size_t bitsPerPixel);

// Applies a document; 1 or 0.
int apply(const std::string &text);

// The most pixels that a display of the stage has, so that runs stay quick.
inline constexpr std::size_t mostPixels = 1u << 14;

} // namespace fuzz
