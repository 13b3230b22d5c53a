#include "platform/objects/signals.h"
#include "platform/wayland/client.h"

#include <atomic>
#include <dlfcn.h>
#include <mutex>

namespace platform::wayland {

constinit LibraryFunctions libraryFunctions;

namespace {

constexpr const char *libraryName = "libwayland-client.so.0";

constinit std::mutex mutex;
constinit void *handle = nullptr; // under the mutex
constinit std::atomic<int> uses = 0;

template <typename Function> bool find(Function *&function, const char *name) {
    function = reinterpret_cast<Function *>(dlsym(handle, name));
    return function != nullptr;
}

bool findAll() {
    bool found = true;
#define MIRROR_WAYLAND_FIND(name) found = find(name, #name) && found
    MIRROR_WAYLAND_FUNCTIONS(MIRROR_WAYLAND_FIND);
#undef MIRROR_WAYLAND_FIND
    return found;
}

void unload() {
    dlclose(handle);
    handle = nullptr;
}

void load() {
    void *hosts = dlopen(libraryName, RTLD_NOW | RTLD_NOLOAD);
    handle = dlopen(libraryName, RTLD_NOW | RTLD_LOCAL);
    if (handle != nullptr && !findAll())
        unload();
    // It prints why a connection failed. That is not ours to print, but a host that uses the
    // library itself keeps its messages.
    if (handle != nullptr && hosts == nullptr)
        wl_log_set_handler_client([](const char *, va_list) {});
    if (hosts != nullptr)
        dlclose(hosts);
}

// Runs after the platform's streams have been stopped, when it is unloaded or the process ends. A
// use that is left over then is that of a thread which hangs.
__attribute__((destructor(101))) void unloadAtLast() {
    if (handle != nullptr && uses == 0)
        unload();
}

} // namespace

// Signals are blocked, since a handler may call the platform.
Library::Library() {
    const QuietSignals quiet;
    const std::lock_guard lock(mutex);
    if (handle == nullptr)
        load();
    loaded = handle != nullptr;
    ++uses;
}

Library::~Library() {
    --uses;
}

} // namespace platform::wayland
