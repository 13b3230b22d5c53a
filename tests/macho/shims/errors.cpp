#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <cerrno>
#include <cstring>

namespace macho {

namespace {

struct Error {
    int host;
    int darwin; // Apple's sys/errno.h
    const char *text;
};

// The errors that files, sockets, memory and threads can cause.
constexpr Error errors[] = {
    {0, 0, "Undefined error: 0"},
    {EPERM, 1, "Operation not permitted"},
    {ENOENT, 2, "No such file or directory"},
    {ESRCH, 3, "No such process"},
    {EINTR, 4, "Interrupted system call"},
    {EIO, 5, "Input/output error"},
    {ENXIO, 6, "Device not configured"},
    {EBADF, 9, "Bad file descriptor"},
    {EDEADLK, 11, "Resource deadlock avoided"},
    {ENOMEM, 12, "Cannot allocate memory"},
    {EACCES, 13, "Permission denied"},
    {EFAULT, 14, "Bad address"},
    {EBUSY, 16, "Resource busy"},
    {EEXIST, 17, "File exists"},
    {EXDEV, 18, "Cross-device link"},
    {ENODEV, 19, "Operation not supported by device"},
    {ENOTDIR, 20, "Not a directory"},
    {EISDIR, 21, "Is a directory"},
    {EINVAL, 22, "Invalid argument"},
    {ENFILE, 23, "Too many open files in system"},
    {EMFILE, 24, "Too many open files"},
    {ENOTTY, 25, "Inappropriate ioctl for device"},
    {ETXTBSY, 26, "Text file busy"},
    {EFBIG, 27, "File too large"},
    {ENOSPC, 28, "No space left on device"},
    {ESPIPE, 29, "Illegal seek"},
    {EROFS, 30, "Read-only file system"},
    {EPIPE, 32, "Broken pipe"},
    {EDOM, 33, "Numerical argument out of domain"},
    {ERANGE, 34, "Result too large"},
    {EAGAIN, 35, "Resource temporarily unavailable"},
    {EINPROGRESS, 36, "Operation now in progress"},
    {EALREADY, 37, "Operation already in progress"},
    {ENOTSOCK, 38, "Socket operation on non-socket"},
    {EDESTADDRREQ, 39, "Destination address required"},
    {EMSGSIZE, 40, "Message too long"},
    {ENOPROTOOPT, 42, "Protocol not available"},
    {EPROTONOSUPPORT, 43, "Protocol not supported"},
    {EAFNOSUPPORT, 47, "Address family not supported by protocol family"},
    {EADDRINUSE, 48, "Address already in use"},
    {EADDRNOTAVAIL, 49, "Can't assign requested address"},
    {ENETDOWN, 50, "Network is down"},
    {ENETUNREACH, 51, "Network is unreachable"},
    {ECONNABORTED, 53, "Software caused connection abort"},
    {ECONNRESET, 54, "Connection reset by peer"},
    {ENOBUFS, 55, "No buffer space available"},
    {EISCONN, 56, "Socket is already connected"},
    {ENOTCONN, 57, "Socket is not connected"},
    {ETIMEDOUT, 60, "Operation timed out"},
    {ECONNREFUSED, 61, "Connection refused"},
    {ELOOP, 62, "Too many levels of symbolic links"},
    {ENAMETOOLONG, 63, "File name too long"},
    {EHOSTDOWN, 64, "Host is down"},
    {EHOSTUNREACH, 65, "No route to host"},
    {ENOTEMPTY, 66, "Directory not empty"},
    {EOVERFLOW, 84, "Value too large to be stored in data type"},
    {EOPNOTSUPP, 102, "Operation not supported on socket"},
};

thread_local int currentError = 0;

char *errorText(int number) {
    for (const Error &error : errors)
        if (error.darwin == number)
            return const_cast<char *>(error.text); // callers may not modify it
    refuse("strerror of " + std::to_string(number));
}

class DarwinCategory : public std::error_category {
public:
    const char *name() const noexcept override { return "generic"; }
    std::string message(int number) const override { return errorText(number); }
};

} // namespace

const std::error_category &darwinCategory() {
    static const DarwinCategory category;
    return category;
}

int darwinError(int number) {
    for (const Error &error : errors)
        if (error.host == number)
            return error.darwin;
    refuse("an error without a number on macOS: " + std::string(std::strerror(number)));
}

int *darwinErrno() {
    return &currentError;
}

void takeErrno() {
    currentError = darwinError(errno);
}

int failWith(int darwinNumber) {
    currentError = darwinNumber;
    return -1;
}

void addErrors(Imports &imports) {
    imports.add(libSystem, "___error", darwinErrno);
    imports.add(libSystem, "_strerror", errorText);
}

} // namespace macho
