#include "platform/objects/wakeUp.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>

namespace platform {

bool waitUntilReady(int fd, short events, Clock::time_point deadline) {
    pollfd waiting{fd, events, 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const int ready = poll(&waiting, 1, static_cast<int>(std::max<long long>(0, left.count())));
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

WakeUp::WakeUp() : event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event.valid())
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

void WakeUp::signal() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(event.get(), &one, sizeof one);
}

bool WakeUp::wait(int fd, std::optional<Clock::time_point> deadline) {
    pollfd waiting[2] = {{event.get(), POLLIN, 0}, {fd, POLLIN, 0}};
    timespec left{};
    if (deadline) {
        const auto nanoseconds = std::max<std::int64_t>(
            0,
            std::chrono::duration_cast<std::chrono::nanoseconds>(*deadline - Clock::now()).count());
        left.tv_sec = nanoseconds / 1'000'000'000;
        left.tv_nsec = nanoseconds % 1'000'000'000;
    }
    if (ppoll(waiting, 2, deadline ? &left : nullptr, nullptr) <= 0)
        return false;
    std::uint64_t count = 0;
    return read(event.get(), &count, sizeof count) == sizeof count;
}

} // namespace platform
