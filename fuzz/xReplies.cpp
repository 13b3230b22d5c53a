// An untrusted X server: whatever it replies about its setup, monitors and pixels, displays are
// listed, captured and painted without memory errors.
#include "fuzz/fakeServer.h"
#include "fuzz/require.h"
#include "platform/x11/damageWatch.h"
#include "platform/x11/framePainter.h"
#include "platform/x11/monitors.h"
#include "platform/x11/source.h"

#include <CoreGraphics/CoreGraphics.h>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <set>
#include <vector>

const platform::Source &platform::sessionSource() {
    return x11::displaySource;
}

using fuzz::require;
namespace x11 = platform::x11;

namespace {

void grabDisplays() {
    std::uint32_t ids[8] = {};
    std::uint32_t count = 0;
    if (CGGetActiveDisplayList(8, ids, &count) != kCGErrorSuccess)
        require(count == 0, "without a list there are no displays");
    require(count <= 8, "the list is no longer than its room");
    require(std::set(ids, ids + count).size() == count, "identifiers are all different");
    const CGImageRef image = CGDisplayCreateImage(count > 0 ? ids[count - 1] : 1);
    if (image == nullptr)
        return;
    const std::size_t size = CGImageGetWidth(image) * CGImageGetHeight(image) * 4;
    const CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    CGImageRelease(image);
    require(data != nullptr, "an image has pixels");
    std::vector<std::uint8_t> copy(size);
    std::memcpy(copy.data(), CFDataGetBytePtr(data), size); // every pixel can be read
    CFRelease(data);
}

// Does what a stream does while its monitor changes in arbitrary ways.
void paintFrames(FuzzedDataProvider &input) {
    const auto connection = x11::Connection::open();
    if (!connection)
        return;
    auto format = x11::PixelFormat::of(*connection);
    if (!format || !x11::DamageWatch::isPossible(*connection))
        return;
    x11::watchMonitors(*connection);
    const int width = input.ConsumeIntegralInRange(1, 60);
    const int height = input.ConsumeIntegralInRange(1, 60);
    x11::FramePainter painter(*connection, std::move(*format), width, height,
                              input.ConsumeIntegralInRange(0, 31) == 0
                                  ? x11::PixelMemory::Sharing::WhenPossible
                                  : x11::PixelMemory::Sharing::Never);
    x11::DamageWatch damage(*connection);
    for (int turn = 0; turn < 8 && !connection->failed(); ++turn) {
        const auto monitors = x11::listMonitors(*connection);
        const auto root = connection->rootArea();
        if (!monitors || monitors->empty() || !root)
            continue;
        painter.aimAt(monitors->front().area, *root);
        painter.paintAll();
        damage.ask();
        painter.paint(damage.answer());
    }
    std::vector<std::uint8_t> copy(static_cast<std::size_t>(width * height) * 4);
    std::memcpy(copy.data(), painter.pixels(), copy.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    fuzz::setServer(input);
    if (input.ConsumeBool())
        grabDisplays();
    else
        paintFrames(input);
    return 0;
}
