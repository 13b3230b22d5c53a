// Images of displays: the pixels at the time of the call, tightly packed, in the image's own
// memory.
#include "platform/objects/coreFoundation.h"
#include "platform/objects/signals.h"
#include "platform/objects/source.h"

#include <CoreGraphics/CoreGraphics.h>
#include <utility>

// Part of its image and destroyed with it.
struct CGDataProvider {
    platform::Picture picture;
};

struct CGImage {
    CGDataProvider provider;
};

CGImageRef CGDisplayCreateImage(CGDirectDisplayID displayID) {
    const platform::SigpipeGuard guard;
    try {
        std::optional<platform::Picture> picture = platform::sessionSource().pictureOf(displayID);
        if (!picture)
            return nullptr;
        return new CGImage{{std::move(*picture)}};
    } catch (...) {
        return nullptr;
    }
}

size_t CGImageGetWidth(CGImageRef image) {
    return image == nullptr ? 0 : image->provider.picture.width;
}

size_t CGImageGetHeight(CGImageRef image) {
    return image == nullptr ? 0 : image->provider.picture.height;
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
        const platform::Picture &picture = provider->picture;
        return platform::createData(picture.pixels.get(), picture.width * picture.height * 4);
    } catch (...) {
        return nullptr;
    }
}
