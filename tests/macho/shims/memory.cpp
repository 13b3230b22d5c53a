// Memory and texts in it: both systems agree about these functions in every respect.
#include "tests/macho/shims/system.h"

#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace macho {

void addMemory(Imports &imports) {
    const auto add = [&imports](const char *symbol, auto *function) {
        imports.add(libSystem, symbol, reinterpret_cast<const void *>(function));
    };
    add("_malloc", &std::malloc);
    add("_realloc", &std::realloc);
    add("_free", &std::free);
    add("___bzero", &bzero);
    add("_memcpy", &std::memcpy);
    add("_memmove", &std::memmove);
    add("_memcmp", &std::memcmp);
    add("_memchr", static_cast<const void *(*)(const void *, int, std::size_t)>(&std::memchr));
    add("_strlen", &std::strlen);
    add("_strncpy", &std::strncpy);
}

} // namespace macho
