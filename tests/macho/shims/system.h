// The C library of macOS, as far as the library imports it, over this system's: numbers and layouts
// are translated both ways. Where both systems agree in every respect, a function is passed through
// as it is.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

// Everything below together.
void addSystem(Imports &imports);

// One room of the C library each.
void addErrors(Imports &imports);     // errno, error texts
void addInterfaces(Imports &imports); // the list of network interfaces
void addMemory(Imports &imports);     // allocation, texts
void addOutput(Imports &imports);     // standard output, random numbers, the time
void addProcess(Imports &imports);    // exit, at-exit entries, assertions, the stack protector
void addSignals(Imports &imports);
void addSockets(Imports &imports);
void addThreads(Imports &imports);

} // namespace macho
