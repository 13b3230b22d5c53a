// Error numbers of macOS.
#pragma once

namespace macho {

// The macOS number of this system's error; one that has none among those the shims know is refused.
int darwinError(int error);

// The other way.
int errorHere(int darwinNumber);

// Where macOS keeps the calling thread's error number.
int *darwinErrno();

// Takes this system's errno over to macOS's.
void takeErrno();

// Hands `result` on; when it is -1, errno goes over.
template <class Result> Result withErrno(Result result) {
    if (result == Result(-1))
        takeErrno();
    return result;
}

// Fails with a macOS number.
int failWith(int darwinNumber);

constexpr int darwinEinval = 22;
constexpr int darwinEdom = 33;

} // namespace macho
