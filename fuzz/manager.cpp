#include "fuzz/manager.h"

#include "mirror/screenMirrorMac.h"
#include "tests/fakes/fakePlatform.h"

namespace fuzz {

void resetManager(unsigned displayID, std::size_t width, std::size_t height,
                  std::size_t bitsPerPixel) {
    mirrorManager.deInitScreen();
    mirrorManager.devices.clear();
    mirrorManager.displayStream = nullptr;
    fake::freeCreated();
    fake::reset(width, height);
    fake::platform().displays[0].id = displayID;
    fake::platform().displays[0].bitsPerPixel = bitsPerPixel;
}

int apply(const std::string &text) {
    std::string copy = text; // the interface takes a writable text
    return mirrorManager.setMirrorConfig(copy.data());
}

} // namespace fuzz
