// The picture comes the way the library's first look at a display comes, so that another platform
// needs nothing new.
#include "tools/mirrorctl/litDisplay.h"

#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>
#include <cstddef>

namespace mirrorctl {

bool isLit(std::uint32_t display) {
    constexpr UInt8 nearlyBlack = 32;
    const CGImageRef image = CGDisplayCreateImage(display);
    const CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    const std::size_t pixels = CGImageGetWidth(image) * CGImageGetHeight(image);
    std::size_t lit = 0;
    if (data != nullptr && CGImageGetBitsPerPixel(image) == 32) {
        const UInt8 *bytes = CFDataGetBytePtr(data);
        for (std::size_t i = 0; i < pixels; ++i) // B, G, R, X each
            lit += std::max({bytes[4 * i], bytes[4 * i + 1], bytes[4 * i + 2]}) > nearlyBlack;
    }
    if (data != nullptr)
        CFRelease(data);
    CGImageRelease(image);
    return lit != 0 && lit >= pixels / 100;
}

} // namespace mirrorctl
