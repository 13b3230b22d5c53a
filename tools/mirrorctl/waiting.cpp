#include "tools/mirrorctl/waiting.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <poll.h>
#include <system_error>

namespace mirrorctl {

bool awaitReadable(const std::vector<int> &descriptors, std::optional<double> timeout) {
    std::vector<pollfd> entries;
    for (const int fd : descriptors)
        if (fd >= 0)
            entries.push_back({fd, POLLIN, 0});
    int milliseconds = -1;
    if (timeout) {
        // A longer wait is as good as made of several.
        constexpr double longest = 1e6;
        milliseconds = static_cast<int>(std::ceil(std::clamp(*timeout * 1e3, 0.0, longest)));
    }
    const int ready = poll(entries.data(), static_cast<nfds_t>(entries.size()), milliseconds);
    if (ready < 0 && errno != EINTR)
        throw std::system_error(errno, std::generic_category(), "poll");
    return ready > 0;
}

} // namespace mirrorctl
