// Where the frameworks are installed on macOS.
#pragma once

namespace macho {

inline constexpr char coreGraphics[] =
    "/System/Library/Frameworks/CoreGraphics.framework/Versions/A/CoreGraphics";
inline constexpr char coreFoundation[] =
    "/System/Library/Frameworks/CoreFoundation.framework/Versions/A/CoreFoundation";
inline constexpr char ioSurface[] =
    "/System/Library/Frameworks/IOSurface.framework/Versions/A/IOSurface";

} // namespace macho
