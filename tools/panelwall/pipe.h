// A pipe within the process, for threads and signal handlers to wake one that polls.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace panelwall {

// Owns both ends, which are closed on exec and never wait: a full pipe takes no more, an empty one
// gives nothing.
class Pipe {
public:
    // Throws std::system_error when no pipe can be made.
    Pipe() {
        if (pipe(ends) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
        for (const int fd : ends) {
            fcntl(fd, F_SETFD, FD_CLOEXEC);
            fcntl(fd, F_SETFL, O_NONBLOCK);
        }
    }
    ~Pipe() {
        for (const int fd : ends)
            close(fd);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    int readEnd() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }

private:
    int ends[2];
};

} // namespace panelwall
