// What images may import: each symbol by the library that is to provide it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace macho {

class Image;

// Libraries, as LLVM's objdump calls them.
inline constexpr char libSystem[] = "libSystem";
inline constexpr char libCxx[] = "libc++";
inline constexpr char coreGraphics[] = "CoreGraphics";
inline constexpr char coreFoundation[] = "CoreFoundation";
inline constexpr char ioSurface[] = "IOSurface";

class Imports {
public:
    // `symbol` with its leading underscore. A symbol can be given again, the last one counts; null
    // stands for one that is not there.
    template <class FunctionOrObject>
    void add(const std::string &library, const std::string &symbol, FunctionOrObject *address) {
        addresses[{library, symbol}] = reinterpret_cast<const void *>(address);
    }
    // Null when `library` has no such symbol, even if another has it.
    const void *find(const std::string &library, const std::string &symbol) const {
        const auto found = addresses.find({library, symbol});
        return found == addresses.end() ? nullptr : found->second;
    }

    // Called when an image has run its at-exit entries and is about to leave the memory.
    std::vector<std::function<void(const Image &)>> unloadChecks;

private:
    std::map<std::pair<std::string, std::string>, const void *> addresses;
};

} // namespace macho
