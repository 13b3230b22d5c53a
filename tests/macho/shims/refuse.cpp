#include "tests/macho/shims/refuse.h"

#include <cstdio>
#include <unistd.h>

namespace macho {

void refuse(const std::string &what) {
    const std::string line = "refused: " + what + "\n";
    std::fflush(stdout); // earlier output of the library
    if (write(STDERR_FILENO, line.data(), line.size()) < 0)
        _exit(refusalStatus + 1);
    _exit(refusalStatus);
}

} // namespace macho
