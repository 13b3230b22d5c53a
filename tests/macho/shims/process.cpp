#include "tests/macho/shims/process.h"
#include "tests/macho/loader/image.h"
#include "tests/macho/loader/threadLocals.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <unwind.h>

extern "C" {
extern void *_NSConcreteStackBlock[32]; // the class of blocks on the stack, of the blocks' runtime
int __cxa_thread_atexit_impl(void (*)(void *), void *, void *);
extern void *__dso_handle;
}

namespace macho {

namespace {

// Any number will do, as long as a string cannot easily write it.
std::uint64_t stackGuard = 0x00a7'3b5e'91c8'2d00;

std::atomic<bool> exiting{false};

[[noreturn]] void shimExit(int status) {
    exiting = true;
    std::exit(status);
}

int shimAtExit(void (*entry)(void *), void *argument, void *header) {
    Image *image = Image::withHeader(header);
    if (image == nullptr)
        refuse("an at-exit entry for no image");
    image->atExit(entry, argument);
    return 0;
}

// Variables of threads that have not ended and whose destructors are the library's.
std::atomic<int> destructorsToCome{0};

struct Destruction {
    void (*destroy)(void *);
    void *variable;
};

void runDestruction(void *argument) {
    const std::unique_ptr<Destruction> destruction(static_cast<Destruction *>(argument));
    destruction->destroy(destruction->variable);
    --destructorsToCome;
}

void shimThreadAtExit(void (*destroy)(void *), void *variable) {
    ++destructorsToCome;
    // Of this program: the C library knows nothing of images.
    __cxa_thread_atexit_impl(runDestruction, new Destruction{destroy, variable}, &__dso_handle);
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

bool libraryIsExiting() {
    return exiting;
}

void addProcess(Imports &imports) {
    imports.add(libSystem, "_exit", reinterpret_cast<const void *>(&shimExit));
    imports.add(libSystem, "_getpid", reinterpret_cast<const void *>(getpid));
    imports.add(libSystem, "___cxa_atexit", shimAtExit);
    imports.add(libSystem, "__tlv_atexit", shimThreadAtExit);
    imports.add(libSystem, "__tlv_bootstrap", ThreadLocals::bootstrap);
    imports.add(libSystem, "___assert_rtn", reinterpret_cast<const void *>(&shimAssert));
    imports.add(libSystem, "___stack_chk_guard", &stackGuard);
    imports.add(libSystem, "___stack_chk_fail", reinterpret_cast<const void *>(&shimStackFailure));
    imports.add(libSystem, "dyld_stub_binder", reinterpret_cast<const void *>(&shimStubBinder));
    imports.add(libSystem, "__Unwind_Resume", reinterpret_cast<const void *>(&_Unwind_Resume));
    imports.add(libSystem, "__NSConcreteStackBlock", &_NSConcreteStackBlock);
    imports.unloadChecks.emplace_back([](const Image &) {
        if (destructorsToCome != 0)
            refuse("unload while a thread has variables of the library to destroy");
    });
}

} // namespace macho
