#include "tools/mirrorctl/libraryTalk.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace mirrorctl {

LibraryTalk::LibraryTalk() {
    fflush(stdout);
    output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    if (output >= 0)
        dup2(STDERR_FILENO, STDOUT_FILENO);
}

LibraryTalk::~LibraryTalk() {
    fflush(stdout);
    if (output < 0)
        return;
    dup2(output, STDOUT_FILENO);
    close(output);
}

} // namespace mirrorctl
