// The eight functions of the C interface, forwarded to the dylib in the loader. A program links
// these instead of the library.
#include "mirror/mirrorInterface.h"
#include "tests/macho/host/libraryImports.h"
#include "tests/macho/loader/image.h"

#include <cstdio>
#include <cstdlib>

namespace {

// Loaded at the first call. So everything that the library uses is initialised before it, and is
// destroyed only after the library's at-exit entries have run. Never unloaded, as on macOS.
macho::Image &library() {
    static macho::Image *image = nullptr;
    if (image == nullptr) {
        try {
            image = new macho::Image(MIRROR_DYLIB, macho::libraryImports());
        } catch (const macho::LoadError &error) {
            std::fprintf(stderr, "%s\n", error.what());
            std::exit(1);
        }
    }
    return *image;
}

template <class Function> Function *find(const char *name) {
    auto *function = library().function<Function>(name);
    if (function == nullptr) {
        std::fprintf(stderr, "%s does not export %s\n", MIRROR_DYLIB, name);
        std::exit(1);
    }
    return function;
}

} // namespace

int getDisplays(char *buffer, int bufferLength) {
    return find<decltype(getDisplays)>("getDisplays")(buffer, bufferLength);
}

int getSizeOfStreamFrameJson(void) {
    return find<decltype(getSizeOfStreamFrameJson)>("getSizeOfStreamFrameJson")();
}

int getStreamFrameJson(char *buffer) {
    return find<decltype(getStreamFrameJson)>("getStreamFrameJson")(buffer);
}

int captureCurrentStreamFrames(void) {
    return find<decltype(captureCurrentStreamFrames)>("captureCurrentStreamFrames")();
}

int getPalette(char *buffer) {
    return find<decltype(getPalette)>("getPalette")(buffer);
}

int setMirrorConfig(char *json) {
    return find<decltype(setMirrorConfig)>("setMirrorConfig")(json);
}

int startMirror(void) {
    return find<decltype(startMirror)>("startMirror")();
}

int stopMirror(void) {
    return find<decltype(stopMirror)>("stopMirror")();
}
