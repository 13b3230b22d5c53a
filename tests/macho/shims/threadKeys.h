// Keys of thread-specific values: eight bytes on macOS, four here.
#pragma once

#include <cstdint>
#include <pthread.h>

namespace macho {

// Our keys carry a mark in their upper half: one that was cut to four bytes on its way, or never
// made here, is refused.
std::uint64_t darwinKey(pthread_key_t key);
pthread_key_t keyHere(std::uint64_t darwin);

} // namespace macho
