// Images of displays: the pixels as they were at the call, tightly packed, in the image's own
// memory.
#include "platform/objects/coreFoundation.h"
#include "platform/objects/signals.h"
#include "platform/objects/source.h"

#include <CoreGraphics/CoreGraphics.h>
#include <memory>
#include <utility>
#include <vector>

// The provider is a part of its image and ends with it.
struct CGDataProvider {
    std::vector<std::uint8_t> bytes;
};

struct CGImage {
    std::size_t width = 0;
    std::size_t height = 0;
    CGDataProvider provider;
};

CGImageRef CGDisplayCreateImage(CGDirectDisplayID displayID) {
    const platform::SigpipeGuard guard;
    try {
        std::optional<platform::Picture> picture = platform::pictureOf(displayID);
        if (!picture)
            return nullptr;
        auto image = std::make_unique<CGImage>();
        image->width = picture->width;
        image->height = picture->height;
        image->provider.bytes = std::move(picture->bytes);
        return image.release();
    } catch (...) {
        return nullptr;
    }
}

size_t CGImageGetWidth(CGImageRef image) {
    return image == nullptr ? 0 : image->width;
}

size_t CGImageGetHeight(CGImageRef image) {
    return image == nullptr ? 0 : image->height;
}

size_t CGImageGetBitsPerPixel(CGImageRef image) {
    return image == nullptr ? 0 : 32;
}

CGDataProviderRef CGImageGetDataProvider(CGImageRef image) {
    return image == nullptr ? nullptr : &image->provider;
}

void CGImageRelease(CGImageRef image) {
    delete image;
}

CFDataRef CGDataProviderCopyData(CGDataProviderRef provider) {
    if (provider == nullptr)
        return nullptr;
    try {
        return platform::createData(provider->bytes.data(), provider->bytes.size());
    } catch (...) {
        return nullptr;
    }
}
