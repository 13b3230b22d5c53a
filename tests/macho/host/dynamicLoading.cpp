// dlopen and related functions for hosts that open the library themselves. The linker replaces the
// C library's functions with these (--wrap), so that the hosts' sources need no change. Files other
// than dylibs are passed to the C library.
#include "tests/macho/host/libraryImports.h"
#include "tests/macho/loader/image.h"

#include <dlfcn.h>
#include <set>
#include <string>

extern "C" {
void *__real_dlopen(const char *path, int mode);
void *__real_dlsym(void *handle, const char *symbol);
int __real_dlclose(void *handle);
char *__real_dlerror(void);
void *__wrap_dlopen(const char *path, int mode);
void *__wrap_dlsym(void *handle, const char *symbol);
int __wrap_dlclose(void *handle);
char *__wrap_dlerror(void);
}

namespace {

std::set<void *> images;
std::string error; // of the last attempt to open a dylib; empty when it succeeded

} // namespace

void *__wrap_dlopen(const char *path, int mode) {
    if (!std::string(path).ends_with(".dylib.so"))
        return __real_dlopen(path, mode);
    error.clear();
    try {
        return *images.insert(new macho::Image(path, macho::libraryImports())).first;
    } catch (const macho::LoadError &loadError) {
        error = loadError.what();
        return nullptr;
    }
}

void *__wrap_dlsym(void *handle, const char *symbol) {
    if (!images.contains(handle))
        return __real_dlsym(handle, symbol);
    return static_cast<macho::Image *>(handle)->symbol(symbol);
}

int __wrap_dlclose(void *handle) {
    if (images.erase(handle) == 0)
        return __real_dlclose(handle);
    delete static_cast<macho::Image *>(handle);
    return 0;
}

char *__wrap_dlerror(void) {
    return error.empty() ? __real_dlerror() : error.data();
}
