// A pipe within the process, so that threads and signal handlers can wake a thread that polls.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace lights {

// Owns both ends, which are closed on exec and never block: a write to a full pipe and a read from
// an empty one fail at once.
class WakeUp {
public:
    // Throws std::system_error if no pipe can be created.
    WakeUp() {
        if (pipe(ends) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
        for (const int fd : ends) {
            fcntl(fd, F_SETFD, FD_CLOEXEC);
            fcntl(fd, F_SETFL, O_NONBLOCK);
        }
    }
    ~WakeUp() {
        for (const int fd : ends)
            close(fd);
    }
    WakeUp(const WakeUp &) = delete;
    WakeUp &operator=(const WakeUp &) = delete;

    int descriptor() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }

    // Makes the descriptor readable. Any thread.
    void signal() const {
        while (write(ends[1], "", 1) < 0 && errno == EINTR) {
        }
    }

    // Makes it unreadable until the next signal(). Returns whether it was readable.
    bool clear() const {
        char bytes[64];
        bool any = false;
        while (read(ends[0], bytes, sizeof bytes) > 0)
            any = true;
        return any;
    }

private:
    int ends[2];
};

} // namespace lights
