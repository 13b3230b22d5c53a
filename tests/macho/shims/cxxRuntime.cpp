#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <atomic>
#include <dlfcn.h>
#include <system_error>
#include <thread>

namespace macho {

namespace {

// Symbols that mean the same on both systems. Any other symbol must be reviewed before it is added
// here, for example if its type contains a mutex, a condition variable or a file.
constexpr const char *sameOnHost[] = {
    // Exceptions.
    "___cxa_allocate_exception",
    "___cxa_begin_catch",
    "___cxa_end_catch",
    "___cxa_free_exception",
    "___cxa_rethrow",
    "___cxa_throw",
    "___gxx_personality_v0",
    "__ZSt9terminatev",
    "__ZNSt11logic_errorC2EPKc",
    "__ZNSt12length_errorD1Ev",
    "__ZNSt20bad_array_new_lengthC1Ev",
    "__ZNSt20bad_array_new_lengthD1Ev",
    "__ZNSt9bad_allocC1Ev",
    "__ZNSt9bad_allocD1Ev",
    "__ZTISt12length_error",
    "__ZTISt20bad_array_new_length",
    "__ZTISt9bad_alloc",
    "__ZTVSt12length_error",
    // Memory.
    "__Znwm",
    "__Znam",
    "__ZdlPv",
    "__ZdlPvm",
    "__ZdaPv",
    "__ZdaPvm",
    // Strings.
    "__ZNSt3__112basic_stringIcNS_11char_traitsIcEENS_9allocatorIcEEE6appendEPKc",
    "__ZNSt3__112basic_stringIcNS_11char_traitsIcEENS_9allocatorIcEEE6insertENS_11__wrap_"
    "iterIPKcEEc",
    "__ZNSt3__112basic_stringIcNS_11char_traitsIcEENS_9allocatorIcEEE9push_backEc",
    "__ZNSt3__112basic_stringIcNS_11char_traitsIcEENS_9allocatorIcEEE21__grow_by_and_"
    "replaceEmmmmmmPKc",
    "__ZNSt3__19to_stringEi",
    "__ZNSt3__19to_stringEj",
    // Threads and time. A std::thread is eight bytes on both.
    "__ZNSt3__111this_thread9sleep_forERKNS_6chrono8durationIxNS_5ratioILl1ELl1000000000EEEEE",
    "__ZNSt3__115__thread_structC1Ev",
    "__ZNSt3__115__thread_structD1Ev",
    "__ZNSt3__123__cxx_atomic_notify_allEPVKv",
    "__ZNSt3__16chrono12steady_clock3nowEv",
    "__ZNSt3__16thread4joinEv",
    "__ZNSt3__16threadD1Ev",
};

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
    std::__throw_system_error(hostError(error), what);
}

} // namespace

void addCxxRuntime(Imports &imports) {
    for (const char *symbol : sameOnHost)
        imports.add(libCxx, symbol, runtimeSymbol(symbol + 1));
    imports.add(libCxx, "__ZNSt3__123__libcpp_atomic_monitorEPVKv", monitorAtomic);
    imports.add(libCxx, "__ZNSt3__120__libcpp_atomic_waitEPVKvx", waitForAtomic);
    imports.add(libCxx, "__ZNSt3__119__thread_local_dataEv", threadLocalData);
    imports.add(libCxx, "__ZNSt3__120__throw_system_errorEiPKc", throwSystemError);
    addMutexes(imports);
}

} // namespace macho
