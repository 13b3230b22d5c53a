// Handles calls that the shims do not know. No call is passed on unless it is known to mean the
// same on both systems.
#pragma once

#include <string>

namespace macho {

// Prints the refused call on standard error and ends the process at once with exit status 86, so
// that no test can overlook it. Any thread, also in signal handlers.
[[noreturn]] void refuse(const std::string &what);

constexpr int refusalStatus = 86;

} // namespace macho
