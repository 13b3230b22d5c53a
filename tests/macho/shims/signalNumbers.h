// Signal numbers of macOS.
#pragma once

#include <csignal>
#include <cstdint>

namespace macho {

// The macOS number of one of this system's signals; 0 when it has none.
int darwinSignal(int signal);

// This system's number of a macOS signal; one that does not exist here is refused.
int signalHere(int darwinNumber);

// Sets of signals. One with a member that macOS does not have is refused.
std::uint32_t darwinSignalSet(const sigset_t &set);
sigset_t signalSetHere(std::uint32_t darwinSet);

} // namespace macho
