// Conversions of flags.
#pragma once

#include "tests/macho/shims/refuse.h"

namespace macho {

struct Flag {
    unsigned host;
    int darwin;
};

// This system's flags for those of macOS; flags that are not among `flags` are refused.
template <std::size_t count>
int hostFlags(const std::string &call, const Flag (&flags)[count], int darwin) {
    unsigned host = 0;
    int unknown = darwin;
    for (const Flag &flag : flags)
        if ((darwin & flag.darwin) != 0) {
            host |= flag.host;
            unknown &= ~flag.darwin;
        }
    if (unknown != 0)
        refuse(call + " with the flags " + std::to_string(darwin));
    return static_cast<int>(host);
}

} // namespace macho
