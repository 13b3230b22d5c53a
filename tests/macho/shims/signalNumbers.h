// Signal numbers of macOS.
#pragma once

#include <csignal>
#include <cstdint>

namespace macho {

// The macOS number of this system's signal; 0 if it has none.
int darwinSignal(int signal);

// This system's number of a macOS signal; signals that do not exist here are refused.
int hostSignal(int darwinNumber);

// Conversions of signal sets. Sets with a signal that the other system lacks are refused.
std::uint32_t darwinSignalSet(const sigset_t &set);
sigset_t hostSignalSet(std::uint32_t darwinSet);

} // namespace macho
