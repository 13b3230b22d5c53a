#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <atomic>
#include <dlfcn.h>
#include <system_error>
#include <thread>

namespace macho {

namespace {

constexpr const char *sameOnHost[] = {
#include "tests/macho/shims/cxxSymbols.inc"
};

// A wait compares eight bytes on macOS and four here.
std::int64_t monitorAtomic(const volatile void *address) {
    return std::__libcpp_atomic_monitor(address);
}

void waitForAtomic(const volatile void *address, std::int64_t value) {
    std::__libcpp_atomic_wait(address, static_cast<std::__cxx_contention_t>(value));
}

// Returns the address of the object that starts with the key of the thread-local data.
const std::uint64_t *threadLocalData() {
    static const std::uint64_t key =
        darwinKey(reinterpret_cast<const pthread_key_t &>(std::__thread_local_data()));
    return &key;
}

[[noreturn]] void throwSystemError(int error, const char *what) {
    throw std::system_error(error, darwinCategory(), what);
}

} // namespace

// Searches LLVM's libraries only, since other libraries define the same names.
const void *runtimeSymbol(const char *name) {
    for (const char *library : {"libc++.so.1", "libc++abi.so.1"}) {
        void *handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
        if (handle == nullptr)
            continue;
        const void *address = dlsym(handle, name);
        dlclose(handle);
        Dl_info info;
        if (address != nullptr && dladdr(address, &info) != 0 &&
            std::string(info.dli_fname).find("libc++") != std::string::npos)
            return address;
    }
    refuse("the C++ library of this system has no " + std::string(name));
}

void addCxxRuntime(Imports &imports) {
    for (const char *symbol : sameOnHost)
        imports.add(libCxx, symbol, runtimeSymbol(symbol + 1));
    imports.add(libCxx, "__ZNSt3__123__libcpp_atomic_monitorEPVKv", monitorAtomic);
    imports.add(libCxx, "__ZNSt3__120__libcpp_atomic_waitEPVKvx", waitForAtomic);
    imports.add(libCxx, "__ZNSt3__119__thread_local_dataEv", threadLocalData);
    imports.add(libCxx, "__ZNSt3__120__throw_system_errorEiPKc", throwSystemError);
    addConditions(imports);
    addMutexes(imports);
    addStreams(imports);
}

} // namespace macho
