// The frameworks, as LLVM's objdump calls them.
#pragma once

namespace macho {

inline constexpr char coreGraphics[] = "CoreGraphics";
inline constexpr char coreFoundation[] = "CoreFoundation";
inline constexpr char ioSurface[] = "IOSurface";

} // namespace macho
