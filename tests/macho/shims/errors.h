// Error numbers of macOS.
#pragma once

namespace macho {

// The macOS number of this system's error; errors that the shims do not know are refused.
int darwinError(int error);

// The reverse conversion.
int hostError(int darwinNumber);

// The address of macOS's errno for the calling thread.
int *darwinErrno();

// Copies this system's errno to macOS's errno.
void takeErrno();

// Returns `result`; if it is -1, copies errno first.
template <class Result> Result withErrno(Result result) {
    if (result == Result(-1))
        takeErrno();
    return result;
}

// Sets macOS's errno to a macOS number and returns -1.
int failWith(int darwinNumber);

constexpr int darwinEinval = 22;
constexpr int darwinEdom = 33;

} // namespace macho
