// Error numbers of macOS.
#pragma once

#include <cerrno>
#include <system_error>

namespace macho {

// The macOS number of this system's error; errors that the shims do not know are refused.
int darwinError(int error);

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

// What std::generic_category() and std::system_category() stand for: macOS's numbers and texts.
const std::error_category &darwinCategory();

// The address of a function that calls one of this system and copies the errno that it sets.
template <auto function> struct WithErrno;
template <class Result, class... Arguments, bool isNoexcept,
          Result (*function)(Arguments...) noexcept(isNoexcept)>
struct WithErrno<function> {
    static Result call(Arguments... arguments) {
        errno = 0;
        const Result result = function(arguments...);
        if (errno != 0)
            takeErrno();
        return result;
    }
};
template <auto function> constexpr auto *forwarded = WithErrno<function>::call;

constexpr int darwinEinval = 22;
constexpr int darwinEdom = 33;

} // namespace macho
