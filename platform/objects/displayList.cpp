#include "platform/objects/signals.h"
#include "platform/objects/source.h"

#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>
#include <limits>

// Without a server the count is 0 and the result an error.
CGError CGGetActiveDisplayList(uint32_t maxDisplays, CGDirectDisplayID *activeDisplays,
                               uint32_t *displayCount) {
    if (displayCount == nullptr)
        return kCGErrorIllegalArgument;
    *displayCount = 0;
    const platform::SigpipeGuard guard;
    try {
        const auto displays = platform::sessionSource().listDisplays();
        if (!displays)
            return kCGErrorFailure;
        const std::size_t room = activeDisplays == nullptr
                                     ? std::numeric_limits<std::uint32_t>::max()
                                     : std::size_t{maxDisplays};
        const std::size_t count = std::min(room, displays->size());
        for (std::size_t i = 0; activeDisplays != nullptr && i < count; ++i)
            activeDisplays[i] = (*displays)[i];
        *displayCount = static_cast<uint32_t>(count);
        return kCGErrorSuccess;
    } catch (...) {
        return kCGErrorFailure;
    }
}
