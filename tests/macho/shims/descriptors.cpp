#include "tests/macho/shims/descriptors.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/flags.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <unistd.h>

namespace macho {

namespace {

constexpr std::size_t maxDescriptors = 65536;
std::array<std::atomic<bool>, maxDescriptors> isOpen;

// Apple's sys/fcntl.h.
constexpr int darwinAccessMode = 3; // reading, writing or both: the same numbers here
constexpr int darwinDuplicate = 67; // with the close-on-exec flag
constexpr int darwinWindowSize = 0x40087468;

constexpr Flag statusFlags[] = {{O_NONBLOCK, 0x4}, {O_APPEND, 0x8}};
constexpr Flag openFlags[] = {{O_NONBLOCK, 0x4},     {O_APPEND, 0x8}, {O_CREAT, 0x200},
                              {O_TRUNC, 0x400},      {O_EXCL, 0x800}, {O_NOCTTY, 0x20000},
                              {O_CLOEXEC, 0x1000000}};

template <std::size_t count>
int hostFileFlags(const char *call, const Flag (&flags)[count], int darwin) {
    return (darwin & darwinAccessMode) | hostFlags(call, flags, darwin & ~darwinAccessMode);
}

int darwinStatusFlags(int host) {
    int darwin = host & O_ACCMODE;
    for (const Flag &flag : statusFlags)
        if ((static_cast<unsigned>(host) & flag.host) != 0)
            darwin |= flag.darwin;
    return darwin;
}

int shimControl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const int argument = va_arg(arguments, int);
    va_end(arguments);
    checkOpen("fcntl", fd);
    switch (command) {
    case F_SETFD:
        if (argument != FD_CLOEXEC)
            break;
        return withErrno(fcntl(fd, F_SETFD, argument));
    case F_GETFL: {
        const int flags = fcntl(fd, F_GETFL);
        return flags < 0 ? withErrno(-1) : darwinStatusFlags(flags);
    }
    case F_SETFL:
        return withErrno(
            fcntl(fd, F_SETFL, hostFileFlags("fcntl(F_SETFL)", statusFlags, argument)));
    case darwinDuplicate:
        return adoptDescriptor(fcntl(fd, F_DUPFD_CLOEXEC, argument));
    }
    refuse("fcntl with the command " + std::to_string(command) + " and the argument " +
           std::to_string(argument));
}

int shimOpen(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t); // of a file that is made; unused otherwise
    va_end(arguments);
    return adoptDescriptor(open(path, hostFileFlags("open", openFlags, flags), mode));
}

int shimClose(int fd) {
    checkOpen("close", fd);
    if (fd >= 0)
        isOpen[fd] = false;
    return withErrno(close(fd));
}

int shimPipe(int *ends) {
    if (pipe(ends) != 0)
        return withErrno(-1);
    adoptDescriptor(ends[0]);
    adoptDescriptor(ends[1]);
    return 0;
}

int shimDuplicate(int fd, int as) {
    checkOpen("dup2", fd);
    return adoptDescriptor(dup2(fd, as));
}

ssize_t shimRead(int fd, void *bytes, std::size_t length) {
    checkOpen("read", fd);
    return withErrno(read(fd, bytes, length));
}

ssize_t shimWrite(int fd, const void *bytes, std::size_t length) {
    checkOpen("write", fd);
    return withErrno(write(fd, bytes, length));
}

int shimIsTerminal(int fd) {
    checkOpen("isatty", fd);
    if (isatty(fd) == 1)
        return 1;
    takeErrno();
    return 0;
}

int shimDeviceControl(int fd, unsigned long request, void *argument) {
    checkOpen("ioctl", fd);
    if (request != darwinWindowSize)
        refuse("ioctl with the request " + std::to_string(request));
    return withErrno(ioctl(fd, TIOCGWINSZ, argument)); // four numbers of 16 bits on both
}

// The structure is the same on both systems, and so are these events.
int shimPoll(pollfd *polled, unsigned count, int milliseconds) {
    for (unsigned i = 0; i < count; ++i) {
        checkOpen("poll", polled[i].fd);
        if ((polled[i].events & ~(POLLIN | POLLPRI | POLLOUT)) != 0)
            refuse("poll for the events " + std::to_string(polled[i].events));
    }
    return withErrno(poll(polled, count, milliseconds));
}

// Sets have 1024 bits on both systems, in the same order.
static_assert(sizeof(fd_set) == 128);

int shimSelect(int count, fd_set *reading, fd_set *writing, fd_set *other, const DarwinTime *wait) {
    timeval time = wait == nullptr ? timeval{} : hostTime(*wait);
    return withErrno(select(count, reading, writing, other, wait == nullptr ? nullptr : &time));
}

int shimFitsSet(int fd, const void *, int isUnlimited) {
    if (isUnlimited != 0)
        refuse("an unlimited set of descriptors");
    return static_cast<int>(fd >= 0 && fd < FD_SETSIZE);
}

} // namespace

int adoptDescriptor(int fd) {
    if (fd >= static_cast<int>(maxDescriptors))
        refuse("more descriptors than the shims can count");
    if (fd >= 0)
        isOpen[fd] = true;
    return withErrno(fd);
}

void checkOpen(const char *call, int fd) {
    if (fd >= 0 && (static_cast<std::size_t>(fd) >= maxDescriptors || !isOpen[fd]))
        refuse(std::string(call) + " with descriptor " + std::to_string(fd) +
               ", which the library has not opened or has closed");
}

void addDescriptors(Imports &imports) {
    imports.add(libSystem, "___darwin_check_fd_set_overflow", shimFitsSet);
    imports.add(libSystem, "_close", shimClose);
    imports.add(libSystem, "_dup2", shimDuplicate);
    imports.add(libSystem, "_fcntl", shimControl);
    imports.add(libSystem, "_ioctl", shimDeviceControl);
    imports.add(libSystem, "_isatty", shimIsTerminal);
    imports.add(libSystem, "_open", shimOpen);
    imports.add(libSystem, "_pipe", shimPipe);
    imports.add(libSystem, "_poll", shimPoll);
    imports.add(libSystem, "_read", shimRead);
    imports.add(libSystem, "_select$1050", shimSelect);
    imports.add(libSystem, "_write", shimWrite);
}

} // namespace macho
