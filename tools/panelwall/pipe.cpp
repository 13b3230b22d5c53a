#include "tools/panelwall/pipe.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace panelwall {

Pipe::Pipe() {
    if (pipe(ends) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    for (const int fd : ends) {
        fcntl(fd, F_SETFD, FD_CLOEXEC);
        fcntl(fd, F_SETFL, O_NONBLOCK);
    }
}

Pipe::~Pipe() {
    for (const int fd : ends)
        close(fd);
}

} // namespace panelwall
