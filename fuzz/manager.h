// Prepares the manager with the stand-in display for each configuration.
#pragma once

#include <cstddef>
#include <string>

namespace fuzz {

// Resets the manager as after loading the library, with one display of this identifier and size.
// Frees the resources of earlier configurations.
void resetManager(unsigned displayID, std::size_t width, std::size_t height,
                  std::size_t bitsPerPixel);

// Applies a document and returns setMirrorConfig()'s result, 1 or 0.
int apply(const std::string &text);

// The largest number of pixels of the display, which keeps runs quick.
inline constexpr std::size_t maxPixels = 1u << 14;

} // namespace fuzz
