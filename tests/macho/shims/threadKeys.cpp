#include "tests/macho/shims/threadKeys.h"
#include "tests/macho/shims/refuse.h"

namespace macho {

namespace {
constexpr std::uint64_t mark = 0x4b657900'00000000;
}

std::uint64_t darwinKey(pthread_key_t key) {
    return mark | key;
}

pthread_key_t keyHere(std::uint64_t darwin) {
    if (darwin >> 32 != mark >> 32)
        refuse("a thread-specific value with the unknown key " + std::to_string(darwin));
    return static_cast<pthread_key_t>(darwin);
}

} // namespace macho
