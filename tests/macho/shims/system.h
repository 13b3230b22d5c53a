// The C library and the C++ runtime of macOS, as far as the library imports them, over this
// system's: numbers and layouts are translated both ways. What is the same on both systems is
// passed through as it is; of LLVM's C++ runtime that is all but what holds something of the C
// library's.
#pragma once

#include "tests/macho/loader/imports.h"

#include <cstdint>
#include <pthread.h>

namespace macho {

// All of the C library: what is passed through, and its rooms.
void addSystem(Imports &imports);
void addErrors(Imports &imports);     // errno, error texts
void addInterfaces(Imports &imports); // the list of network interfaces
void addProcess(Imports &imports);    // exit, at-exit entries, assertions, the stack protector
void addSignals(Imports &imports);
void addSockets(Imports &imports);
void addThreads(Imports &imports);

// All of the C++ runtime, std::mutex with the layout that it has on macOS among it.
void addCxxRuntime(Imports &imports);
void addMutexes(Imports &imports);

// The library has ended the process: what it then destroys may still be in use by the thread that
// its signal handler has interrupted.
bool libraryIsExiting();

// Keys of thread-specific values: eight bytes on macOS, four here. Ours carry a mark in their upper
// half: one that was cut to four bytes on its way, or never made here, is refused.
std::uint64_t darwinKey(pthread_key_t key);

} // namespace macho
