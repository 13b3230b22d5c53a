#include "tests/macho/shims/system.h"

#include <dlfcn.h>
#include <strings.h>

namespace macho {

namespace {

// Functions that behave the same on both systems, except for the numbers from rand(), which are
// unspecified anyway. A thread's identifier is a pointer or number of eight bytes on both.
constexpr const char *sameOnHost[] = {
    "_free",   "_getpid",      "_inet_aton", "_inet_ntoa", "_malloc",       "_memchr",  "_memcmp",
    "_memcpy", "_memmove",     "_printf",    "_puts",      "_pthread_self", "_realloc", "_rand",
    "_srand",  "_sched_yield", "_strlen",    "_strncpy",   "_time",
};

} // namespace

void addSystem(Imports &imports) {
    for (const char *symbol : sameOnHost)
        imports.add(libSystem, symbol, dlsym(RTLD_DEFAULT, symbol + 1));
    imports.add(libSystem, "___bzero", bzero);
    addErrors(imports);
    addInterfaces(imports);
    addProcess(imports);
    addSignals(imports);
    addSockets(imports);
    addThreads(imports);
}

} // namespace macho
