// This platform's only clock: monotonic, so that a change of the time of day moves no deadline.
#pragma once

#include <chrono>

namespace platform {

using Clock = std::chrono::steady_clock;

// How long the server may take for a single step before it counts as hung.
constexpr Clock::duration serverPatience = std::chrono::seconds(2);

} // namespace platform
