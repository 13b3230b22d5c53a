#include "tools/mirrorctl/server.h"

#include "tools/mirrorctl/waiting.h"

#include <CoreGraphics/CoreGraphics.h>
#include <algorithm>
#include <cctype>
#include <cstdio>

namespace mirrorctl {

std::string serverSentence(const std::string &predicate) {
    std::string name = serverName();
    name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    return name + " " + predicate;
}

std::string silentServerLine() {
    return serverSentence("does not answer. Is it stopped or overloaded?\n");
}

std::optional<std::size_t> countDisplays() {
    std::uint32_t count = 0;
    if (CGGetActiveDisplayList(0, nullptr, &count) != kCGErrorSuccess)
        return std::nullopt;
    return count;
}

bool reportSilentServer() {
    if (!ServerWatch().isSilentFor(1.0))
        return false;
    std::fputs(silentServerLine().c_str(), stderr);
    return true;
}

// Captures with the same calls as the library's first look at a display, so that a new platform
// needs nothing else.
bool isLit(std::int32_t displayID) {
    constexpr UInt8 nearlyBlack = 32;
    const CGImageRef image = CGDisplayCreateImage(static_cast<CGDirectDisplayID>(displayID));
    const CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    const std::size_t pixels = CGImageGetWidth(image) * CGImageGetHeight(image);
    std::size_t lit = 0;
    if (data != nullptr && CGImageGetBitsPerPixel(image) == 32) {
        const UInt8 *bytes = CFDataGetBytePtr(data);
        for (std::size_t i = 0; i < pixels; ++i) // bytes B, G, R, X
            lit += std::max({bytes[4 * i], bytes[4 * i + 1], bytes[4 * i + 2]}) > nearlyBlack;
    }
    if (data != nullptr)
        CFRelease(data);
    CGImageRelease(image);
    return lit != 0 && lit >= pixels / 100;
}

bool ServerWatch::isSilentFor(double seconds) const {
    if (descriptor() >= 0)
        awaitReadable({descriptor()}, seconds);
    return state() == State::Opening;
}

} // namespace mirrorctl
