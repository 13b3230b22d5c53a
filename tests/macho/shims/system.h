// The parts of macOS's C library and C++ runtime that the library and the programs import,
// implemented with this system's. Numbers and layouts are converted both ways. Functions that are
// the same on both systems are passed through; in LLVM's C++ runtime these are all that contain no
// C library types.
#pragma once

#include "tests/macho/loader/imports.h"

#include <cstdint>
#include <pthread.h>

namespace macho {

// Adds the whole C library: the functions passed through, and the parts below.
void addSystem(Imports &imports);
void addCharacters(Imports &imports);  // kinds of characters, numbers in texts
void addDescriptors(Imports &imports); // what takes one, except for sockets
void addErrors(Imports &imports);      // errno, error texts
void addFiles(Imports &imports);
void addInterfaces(Imports &imports); // the list of network interfaces
void addJumps(Imports &imports);
void addProcess(Imports &imports); // exit, at-exit entries, assertions, the stack protector
void addSignals(Imports &imports);
void addSockets(Imports &imports);
void addThreads(Imports &imports);

// Adds the whole C++ runtime, including std::mutex with its macOS layout.
void addCxxRuntime(Imports &imports);
void addConditions(Imports &imports); // also std::future
void addMutexes(Imports &imports);
void addStreams(Imports &imports); // positions in streams, kinds of characters

// A function of this system's C++ runtime, without the leading underscore of macOS.
const void *runtimeSymbol(const char *name);

// Ends the process as the image's exit() does.
[[noreturn]] void exitImage(int status);

// Whether the library has called exit(). Objects destroyed after that may still be in use by the
// thread that its signal handler has interrupted.
bool libraryIsExiting();

// A key of a thread-specific value has eight bytes on macOS and four here. Converted keys carry a
// mark in their upper half: keys that were truncated to four bytes or not created here are refused.
std::uint64_t darwinKey(pthread_key_t key);

} // namespace macho
