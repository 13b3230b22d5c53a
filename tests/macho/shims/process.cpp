#include "tests/macho/loader/image.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <unwind.h>

extern "C" {
extern void *_NSConcreteStackBlock[32]; // the class of stack blocks, in the blocks runtime
}

namespace macho {

namespace {

// Any number that a string cannot easily write: it has a zero byte.
std::uint64_t stackGuard = 0x00a7'3b5e'91c8'2d00;

std::atomic<bool> exiting{false};

int shimAtExit(void (*entry)(void *), void *argument, void *header) {
    Image *image = Image::withHeader(header);
    if (image == nullptr)
        refuse("an at-exit entry for no image");
    image->atExit(entry, argument);
    return 0;
}

[[noreturn]] void shimAssert(const char *function, const char *file, int line,
                             const char *expression) {
    std::fprintf(stderr, "Assertion failed: (%s), function %s, file %s, line %d.\n", expression,
                 function, file, line);
    std::abort();
}

[[noreturn]] void shimStackFailure() {
    refuse("a stack frame that was written over");
}

[[noreturn]] void shimStubBinder() {
    refuse("a function that was left to be bound at its first call");
}

} // namespace

void exitImage(int status) {
    exiting = true;
    std::exit(status);
}

bool libraryIsExiting() {
    return exiting;
}

void addProcess(Imports &imports) {
    imports.add(libSystem, "_exit", exitImage);
    imports.add(libSystem, "___cxa_atexit", shimAtExit);
    imports.add(libSystem, "___assert_rtn", shimAssert);
    imports.add(libSystem, "___stack_chk_guard", &stackGuard);
    imports.add(libSystem, "___stack_chk_fail", shimStackFailure);
    imports.add(libSystem, "dyld_stub_binder", shimStubBinder);
    imports.add(libSystem, "__Unwind_Resume", _Unwind_Resume);
    imports.add(libSystem, "__NSConcreteStackBlock", &_NSConcreteStackBlock);
}

} // namespace macho
