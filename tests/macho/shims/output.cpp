// Standard output, random numbers and the time: both systems agree about these functions, but for
// the numbers that rand() draws, of which nothing is promised.
#include "tests/macho/shims/system.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace macho {

void addOutput(Imports &imports) {
    const auto add = [&imports](const char *symbol, auto *function) {
        imports.add(libSystem, symbol, reinterpret_cast<const void *>(function));
    };
    add("_printf", &std::printf);
    add("_puts", &std::puts);
    add("_rand", &std::rand);
    add("_srand", &std::srand);
    add("_time", &std::time);
}

} // namespace macho
