#include "tools/config/configDocument.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace config {

static constexpr std::size_t largestText = 64u << 20;

// Waits up to `patience` for each part; forever if it is negative.
static std::optional<std::string> readDescriptor(int fd, std::chrono::milliseconds patience,
                                                 std::string &reason) {
    const auto fail = [&](const std::string &why) {
        reason = why;
        return std::nullopt;
    };
    std::string text;
    char part[16384];
    for (;;) {
        pollfd input{fd, POLLIN, 0};
        const int ready = poll(&input, 1, static_cast<int>(patience.count()));
        if (ready == 0)
            return fail("no data arrived for " + std::to_string(patience.count() / 1000) +
                        " seconds");
        const ssize_t size = ready > 0 ? read(fd, part, sizeof part) : -1;
        if (size == 0)
            return text;
        if (size < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (size < 0)
            return fail(std::generic_category().message(errno));
        if (text.size() + static_cast<std::size_t>(size) > largestText)
            return fail("larger than " + std::to_string(largestText >> 20) + " MiB");
        text.append(part, static_cast<std::size_t>(size));
    }
}

std::optional<std::string> readTextFile(const std::string &path, std::string &reason,
                                        std::chrono::milliseconds patience) {
    if (path == "-")
        return readDescriptor(STDIN_FILENO, std::chrono::milliseconds(-1), reason);
    // O_NONBLOCK: opening a named pipe does not wait for a writer; only reading does.
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        reason = std::generic_category().message(errno);
        return std::nullopt;
    }
    auto text = readDescriptor(fd, patience, reason);
    close(fd);
    return text;
}

} // namespace config
