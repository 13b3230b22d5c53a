// Runs a program for macOS: loads the library that it needs and the program itself, then calls its
// main function. Tests may set two variables in its environment: MAC_REFUSES_CAPTURE stands for a
// user who has not permitted screen recording, and MAC_LACKS names a CoreGraphics symbol as
// missing.
#include "tests/macho/host/libraryImports.h"
#include "tests/macho/loader/image.h"
#include "tests/macho/shims/descriptors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <CoreGraphics/CGWindow.h>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>

namespace macho {

namespace {

// The permission that macOS asks its users for; X servers ask nobody.
bool mayCapture() {
    return std::getenv("MAC_REFUSES_CAPTURE") == nullptr;
}

Imports systemImports() {
    Imports imports = libraryImports();
    if (const char *missing = std::getenv("MAC_LACKS"))
        imports.add(coreGraphics, std::string("_") + missing, static_cast<void *>(nullptr));
    return imports;
}

// The program looks for a function of the frameworks.
const void *findFunction(const void *library, const char *name) {
    const void *everywhere = reinterpret_cast<void *>(-2); // Apple's RTLD_DEFAULT
    if (library != everywhere)
        refuse("dlsym in one library");
    return systemImports().find(coreGraphics, std::string("_") + name);
}

#ifdef MIRROR_DYLIB
// The library is loaded and never unloaded, unless a test has preloaded one that stands in for it.
void addLibrary(Imports &imports) {
    const Image *library = nullptr;
    for (const char *name :
         {"captureCurrentStreamFrames", "getDisplays", "getPalette", "getSizeOfStreamFrameJson",
          "getStreamFrameJson", "setMirrorConfig", "startMirror", "stopMirror"}) {
        const void *address = dlsym(RTLD_DEFAULT, name);
        if (address == nullptr && library == nullptr)
            library = new Image(MIRROR_DYLIB, systemImports());
        if (address == nullptr)
            address = library->symbol(name);
        imports.add("libscreenMirrorMac", std::string("_") + name, address);
    }
}
#else
void addLibrary(const Imports &) {}
#endif

Imports programImports() {
    Imports imports = systemImports();
    imports.add(coreGraphics, "_CGPreflightScreenCaptureAccess", mayCapture);
    imports.add(libSystem, "_dlsym", findFunction);
    addLibrary(imports);
    return imports;
}

int run(int count, char **arguments, char **environment) {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        adoptDescriptor(fd);
    const auto *program = new Image(MAC_PROGRAM, programImports());
    char *apple[] = {nullptr}; // what the system tells a program besides; these read none of it
    auto *start = program->function<int(int, char **, char **, char **)>("main");
    return start(count, arguments, environment, apple);
}

} // namespace

} // namespace macho

int main(int count, char **arguments, char **environment) {
    try {
        macho::exitImage(macho::run(count, arguments, environment));
    } catch (const macho::LoadError &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return macho::refusalStatus;
    }
}
