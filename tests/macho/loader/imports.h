// The symbols that images may import, each with the library that must provide it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace macho {

class Image;

// The names of the libraries in the output of LLVM's objdump.
inline constexpr char libSystem[] = "libSystem";
inline constexpr char libCxx[] = "libc++";
inline constexpr char coreGraphics[] = "CoreGraphics";
inline constexpr char coreFoundation[] = "CoreFoundation";
inline constexpr char ioSurface[] = "IOSurface";

class Imports {
public:
    // `symbol` has its leading underscore. Adding it again replaces it; null marks it as missing.
    template <class FunctionOrObject>
    void add(const std::string &library, const std::string &symbol, FunctionOrObject *address) {
        addresses[{library, symbol}] = reinterpret_cast<const void *>(address);
    }
    // Null if `library` has no such symbol, even if another library has it.
    const void *find(const std::string &library, const std::string &symbol) const {
        const auto found = addresses.find({library, symbol});
        return found == addresses.end() ? nullptr : found->second;
    }

    // Called after an image has run its at-exit entries and before it is unmapped.
    std::vector<std::function<void(const Image &)>> unloadChecks;

private:
    std::map<std::pair<std::string, std::string>, const void *> addresses;
};

} // namespace macho
