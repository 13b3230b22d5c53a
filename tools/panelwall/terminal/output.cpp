#include "tools/panelwall/terminal/output.h"

#include "tools/panelwall/signals.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace panelwall {

bool canWrite(int fd) {
    pollfd waiting{fd, POLLOUT, 0};
    return poll(&waiting, 1, 0) > 0;
}

bool writeAll(int fd, std::string_view text) {
    const int endsBefore = Signals::endCount();
    while (!text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd waiting{fd, POLLOUT, 0};
            poll(&waiting, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
        if (Signals::endCount() != endsBefore)
            return true;
    }
    return true;
}

} // namespace panelwall
