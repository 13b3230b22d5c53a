// The list of displays that a host may mirror.
#include "mirror/jsonMemory.h"
#include "mirror/screenMirrorMac.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {
constexpr std::uint32_t maxDisplays = 10;
}

// Host thread.
int MirrorManager::getDisplays(char *buffer, int bufferLength) {
    try {
        CGGetActiveDisplayList(maxDisplays, nullptr, &displayCount);
        // Room for all that the second call may write: a display can appear between the two calls.
        std::vector<CGDirectDisplayID> displays(maxDisplays);
        // The first count may exceed maxDisplays. If the second call fails, no identifier is known.
        if (CGGetActiveDisplayList(maxDisplays, displays.data(), &displayCount) != kCGErrorSuccess)
            displayCount = 0;
        displayCount = std::min(displayCount, maxDisplays);

        JsonText text;
        JsonWriter writer(text);
        writer.StartObject();
        writer.Key("numDisplays");
        writer.Uint(displayCount);
        writer.Key("displays");
        writer.StartArray();
        for (std::uint32_t i = 0; i < displayCount; ++i) {
            image = CGDisplayCreateImage(displays[i]);
            writer.StartObject();
            writer.Key("displayID");
            writer.Uint(displays[i]);
            writer.Key("width");
            writer.Uint(static_cast<unsigned>(CGImageGetWidth(image)));
            writer.Key("height");
            writer.Uint(static_cast<unsigned>(CGImageGetHeight(image)));
            writer.EndObject();
            CGImageRelease(image);
        }
        writer.EndArray();
        writer.EndObject();
        std::strncpy(buffer, text.GetString(), static_cast<std::size_t>(bufferLength));
        return 1;
    } catch (...) {
        std::puts("Error getting displays");
        return -1;
    }
}
