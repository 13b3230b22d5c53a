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

// The errors that sockets, memory and threads can cause.
constexpr Error errors[] = {
    {EPERM, 1, "Operation not permitted"},
    {EINTR, 4, "Interrupted system call"},
    {EIO, 5, "Input/output error"},
    {EBADF, 9, "Bad file descriptor"},
    {EDEADLK, 11, "Resource deadlock avoided"},
    {ENOMEM, 12, "Cannot allocate memory"},
    {EACCES, 13, "Permission denied"},
    {EFAULT, 14, "Bad address"},
    {EBUSY, 16, "Resource busy"},
    {EINVAL, 22, "Invalid argument"},
    {ENFILE, 23, "Too many open files in system"},
    {EMFILE, 24, "Too many open files"},
    {EPIPE, 32, "Broken pipe"},
    {EDOM, 33, "Numerical argument out of domain"},
    {EAGAIN, 35, "Resource temporarily unavailable"},
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
    {ECONNRESET, 54, "Connection reset by peer"},
    {ENOBUFS, 55, "No buffer space available"},
    {EISCONN, 56, "Socket is already connected"},
    {ENOTCONN, 57, "Socket is not connected"},
    {ETIMEDOUT, 60, "Operation timed out"},
    {ECONNREFUSED, 61, "Connection refused"},
    {EHOSTDOWN, 64, "Host is down"},
    {EHOSTUNREACH, 65, "No route to host"},
};

thread_local int currentError = 0;

char *errorText(int number) {
    for (const Error &error : errors)
        if (error.darwin == number)
            return const_cast<char *>(error.text); // callers may not modify it
    refuse("strerror of " + std::to_string(number));
}

} // namespace

int darwinError(int number) {
    for (const Error &error : errors)
        if (error.host == number)
            return error.darwin;
    refuse("an error without a number on macOS: " + std::string(std::strerror(number)));
}

int hostError(int darwinNumber) {
    for (const Error &error : errors)
        if (error.darwin == darwinNumber)
            return error.host;
    refuse("the error number " + std::to_string(darwinNumber));
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
