// A pipe within the process, so that threads and signal handlers can wake a thread that polls.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace panelwall {

// Owns both ends, which are close-on-exec and non-blocking: a write to a full pipe and a read from
// an empty one fail at once.
class Pipe {
public:
    // Throws std::system_error when the pipe cannot be created.
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
