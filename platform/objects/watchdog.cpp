#include "platform/objects/watchdog.h"

#include "platform/objects/signals.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <system_error>

namespace platform {

Watchdog::Watchdog(int fd)
    : socket(fcntl(fd, F_DUPFD_CLOEXEC, 0)), deadline(Clock::now() + serverPatience) {
    if (!socket.valid())
        throw std::system_error(errno, std::generic_category(), "dup");
    thread = startThread([this] { watch(); });
}

Watchdog::~Watchdog() {
    ended.signal();
    thread.join();
}

void Watchdog::extend() {
    deadline.store(Clock::now() + serverPatience);
}

void Watchdog::watch() {
    while (!ended.wait(-1, deadline.load())) {
        if (Clock::now() < deadline.load())
            continue;
        shutdown(socket.get(), SHUT_RDWR);
        return;
    }
}

} // namespace platform
