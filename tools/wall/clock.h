// The clock of the wall. Times come from the caller, and only go forward.
#pragma once

#include <chrono>

namespace panelwall {

using Clock = std::chrono::steady_clock;

} // namespace panelwall
