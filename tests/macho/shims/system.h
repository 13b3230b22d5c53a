// The C library of macOS, as far as the library imports it, over this system's: numbers and layouts
// are translated both ways. Functions about which both systems agree are passed through as they
// are.
#pragma once

#include "tests/macho/loader/imports.h"

namespace macho {

// All of it: what is passed through, and everything below.
void addSystem(Imports &imports);

// One room of the C library each.
void addErrors(Imports &imports);     // errno, error texts
void addInterfaces(Imports &imports); // the list of network interfaces
void addProcess(Imports &imports);    // exit, at-exit entries, assertions, the stack protector
void addSignals(Imports &imports);
void addSockets(Imports &imports);
void addThreads(Imports &imports);

} // namespace macho
