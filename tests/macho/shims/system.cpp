#include "tests/macho/shims/system.h"

#include <dlfcn.h>
#include <strings.h>

namespace macho {

namespace {

// Functions that behave the same on both systems, except for the numbers from rand(), which are
// unspecified anyway. A thread's identifier is a pointer or number of eight bytes on both.
constexpr const char *sameOnHost[] = {
    "___memcpy_chk", "__exit",       "_abort",        "_calloc",    "_clearerr",  "_dprintf",
    "_exp",          "_fmod",        "_fprintf",      "_free",      "_getenv",    "_gethostname",
    "_getpid",       "_hypot",       "_inet_aton",    "_inet_ntoa", "_llround",   "_lround",
    "_malloc",       "_memchr",      "_memcmp",       "_memcpy",    "_memmove",   "_memset",
    "_pow",          "_printf",      "_pthread_self", "_puts",      "_rand",      "_realloc",
    "_remainder",    "_sched_yield", "_setbuf",       "_setvbuf",   "_snprintf",  "_srand",
    "_strcasecmp",   "_strlen",      "_strncpy",      "_time",      "_vsnprintf",
};

} // namespace

void addSystem(Imports &imports) {
    for (const char *symbol : sameOnHost)
        imports.add(libSystem, symbol, dlsym(RTLD_DEFAULT, symbol + 1));
    imports.add(libSystem, "___bzero", bzero);
    addCharacters(imports);
    addDescriptors(imports);
    addErrors(imports);
    addFiles(imports);
    addInterfaces(imports);
    addJumps(imports);
    addProcess(imports);
    addSignals(imports);
    addSockets(imports);
    addThreads(imports);
}

} // namespace macho
