#include "tools/config/textFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace config {

// Waits for something to read, or for the end; a negative patience waits for ever.
static bool awaitInput(int fd, std::chrono::milliseconds patience, std::string &reason) {
    pollfd input{fd, POLLIN, 0};
    for (;;) {
        const int ready = poll(&input, 1, static_cast<int>(patience.count()));
        if (ready > 0)
            return true;
        if (ready < 0 && errno == EINTR)
            continue;
        reason = ready == 0 ? "nobody wrote into it for " +
                                  std::to_string(patience.count() / 1000) + " seconds"
                            : std::strerror(errno); // NOLINT(concurrency-mt-unsafe): as below
        return false;
    }
}

static std::optional<std::string> readDescriptor(int fd, std::chrono::milliseconds patience,
                                                 std::string &reason) {
    std::string text;
    char part[16384];
    for (;;) {
        if (!awaitInput(fd, patience, reason))
            return std::nullopt;
        const ssize_t size = read(fd, part, sizeof part);
        if (size == 0)
            return text;
        if (size < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (size < 0) {
            // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
            reason = std::strerror(errno);
            return std::nullopt;
        }
        if (text.size() + static_cast<std::size_t>(size) > largestText) {
            reason = "larger than " + std::to_string(largestText >> 20) + " MiB";
            return std::nullopt;
        }
        text.append(part, static_cast<std::size_t>(size));
    }
}

std::optional<std::string> readTextFile(const std::string &path, std::string &reason,
                                        std::chrono::milliseconds patience) {
    if (path == "-")
        return readDescriptor(STDIN_FILENO, std::chrono::milliseconds(-1), reason);
    // Opening a pipe waits for nobody; reading it does.
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
        reason = std::strerror(errno);
        return std::nullopt;
    }
    auto text = readDescriptor(fd, patience, reason);
    close(fd);
    return text;
}

} // namespace config
