// The dylib with the recording frameworks.
#pragma once

#include "mirror/mirrorInterface.h"
#include "tests/macho/fakes/recordingFrameworks.h"
#include "tests/macho/host/libraryImports.h"
#include "tests/macho/loader/image.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace macho {

// Loads the library anew for each test, with one display. At the end it checks that there are no
// problems and clears the recording.
class LibraryOverFakes : public testing::Test {
protected:
    LibraryOverFakes();
    ~LibraryOverFakes() override;

    void load(const Imports &imports = libraryImports()) {
        image = std::make_unique<Image>(MIRROR_DYLIB, imports);
    }
    void unload() { image.reset(); }
    // The exported function of this name and of `Function`'s type.
    template <class Function> Function *find(const char *name) {
        return image->function<Function>(name);
    }
    int configure(std::string text) {
        return find<decltype(setMirrorConfig)>("setMirrorConfig")(text.data());
    }
    int start() { return find<decltype(startMirror)>("startMirror")(); }
    int stop() { return find<decltype(stopMirror)>("stopMirror")(); }

    // Match mode on display 1 with one narrow light at 127.0.61.1, whose panel 7 covers a whole
    // screen of 40 x 30.
    static std::string document();
    // The datagram that this light must receive for a screen of one colour.
    static std::vector<std::uint8_t> datagramOf(std::uint32_t colour);

    std::unique_ptr<Image> image;
};

// A screen of 40 x 30 of one colour.
std::vector<std::uint32_t> plainScreen(std::uint32_t colour);

} // namespace macho
