// Images of displays: the pixels as they were at the call, tightly packed, in the image's own
// memory.
#include "platform/x11/coreFoundation.h"
#include "platform/x11/framePainter.h"
#include "platform/x11/monitors.h"
#include "platform/x11/signals.h"

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
    const x11::SigpipeGuard guard;
    try {
        const auto connection = x11::Connection::open();
        if (!connection)
            return nullptr;
        const auto monitors = x11::listMonitors(*connection);
        const auto root = connection->rootArea();
        auto format = x11::PixelFormat::of(*connection);
        if (!monitors || !root || !format)
            return nullptr;
        const auto monitor = x11::findMonitor(*monitors, displayID);
        if (!monitor)
            return nullptr;

        const x11::Rect &area = monitor->area;
        x11::FramePainter painter(*connection, std::move(*format), area.width, area.height,
                                  x11::PixelMemory::Sharing::Never);
        painter.aimAt(area, *root);
        if (painter.paintAll() != x11::ReadOutcome::Done)
            return nullptr;
        auto image = std::make_unique<CGImage>();
        image->width = static_cast<std::size_t>(area.width);
        image->height = static_cast<std::size_t>(area.height);
        image->provider.bytes.assign(painter.pixels(),
                                     painter.pixels() + image->width * image->height * 4);
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
        return x11::createData(provider->bytes.data(), provider->bytes.size());
    } catch (...) {
        return nullptr;
    }
}
