// What the shims do with a call that they do not know: no call is passed on in the hope that the
// two systems mean the same by it.
#pragma once

#include <string>

namespace macho {

// Says on standard error what was refused, and ends the process at once with exit status 86, so
// that no test can overlook it. Any thread, signal handlers too.
[[noreturn]] void refuse(const std::string &what);

constexpr int refusalStatus = 86;

} // namespace macho
