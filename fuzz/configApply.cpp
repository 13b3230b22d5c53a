// Applies well-formed configuration documents with extreme values over a stand-in display: each
// document is accepted and creates exactly its devices, and their colours can be read.
#include "colour/dominantColour.h"
#include "colour/palette.h"
#include "fuzz/manager.h"
#include "fuzz/require.h"
#include "fuzz/seldom.h"
#include "mirror/screenMirrorMac.h"
#include "tools/config/configDocument.h"

#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>

using fuzz::require;

namespace {

std::int32_t integer(FuzzedDataProvider &input) {
    static constexpr std::int32_t edges[] = {
        0,   1,     -1,     2,      3, 100, 255, 65535, 60221, INT32_MIN, INT32_MAX, INT32_MAX - 1,
        256, 65536, -65536, 1 << 30};
    return input.ConsumeBool() ? input.PickValueInArray(edges)
                               : input.ConsumeIntegral<std::int32_t>();
}

double factor(FuzzedDataProvider &input) {
    static constexpr double edges[] = {0.0,      -0.0,         1.0,          -1.0,
                                       1e308,    -1e308,       5e-324,       42.949,
                                       42949673, 2147483647.0, 2147483648.0, 1e-300};
    const double value =
        input.ConsumeBool() ? input.PickValueInArray(edges) : input.ConsumeFloatingPoint<double>();
    return std::isfinite(value) ? value : 0.0; // JSON has only finite numbers
}

// A UTF-8 string that JSON can represent; it may contain NUL.
std::string address(FuzzedDataProvider &input) {
    static const std::string edges[] = {"", "127.0.0.1", "::1",
                                        std::string("1\0"
                                                    "2",
                                                    3),
                                        "\xf0\x9f\x92\xa1"};
    if (input.ConsumeBool())
        return input.PickValueInArray(edges);
    std::string text = input.ConsumeRandomLengthString(40);
    for (char &c : text)
        c = static_cast<char>(c & 0x7f);
    return text;
}

config::Document document(FuzzedDataProvider &input) {
    config::Document made;
    made.displayID = integer(input);
    made.mode = integer(input);
    const int devices = input.ConsumeIntegralInRange(0, 4);
    for (int i = 0; i < devices; ++i) {
        config::DeviceEntry device;
        device.ip = address(input);
        device.controlVersion = integer(input);
        device.shapeType = integer(input);
        device.scaleFactor = factor(input);
        const int panels = input.ConsumeIntegralInRange(0, 6);
        for (int j = 0; j < panels; ++j)
            device.panels.push_back({integer(input), integer(input), integer(input)});
        made.devices.push_back(device);
    }
    return made;
}

void requireDevices(const config::Document &wanted) {
    require(mirrorManager.mode == wanted.mode, "the mode is the document's");
    require(mirrorManager.devices.size() == wanted.devices.size(), "every device was made");
    for (std::size_t i = 0; i < wanted.devices.size(); ++i) {
        const Device &device = mirrorManager.devices[i];
        const config::DeviceEntry &entry = wanted.devices[i];
        require(device.ip == entry.ip.c_str(), "the address is the text up to its first NUL");
        require(device.controlVersion == entry.controlVersion, "the control version is kept");
        require(device.shapeType == entry.shapeType, "the shape type is kept");
        // The library's parser rounds the last bits of numbers freely.
        require(std::abs(device.scaleFactor - entry.scaleFactor) <=
                    std::abs(entry.scaleFactor) * 1e-14,
                "the scale factor is kept");
        require(device.panels.size() == entry.panels.size(), "every panel was made");
        for (std::size_t j = 0; j < entry.panels.size(); ++j) {
            const Panel &panel = device.panels[j];
            require(panel.panelID == entry.panels[j].panelID, "the panel's identifier is kept");
            require(panel.centroidX == entry.panels[j].centroidX, "the centroid's column is kept");
            require(panel.centroidY == entry.panels[j].centroidY, "the centroid's row is kept");
        }
    }
}

// No frame has arrived yet, so the screen is black.
void requireColours() {
    const Frame screen = mirrorManager.currentFrame();
    for (const Device &device : mirrorManager.devices)
        for (const Panel &panel : device.panels) {
            const RGB colour = rootMeanSquare(screen, panel.samplePixels, panel.numSamplePixels);
            require(colour.r == 0 && colour.g == 0 && colour.b == 0, "a black screen is black");
        }
    mirrorManager.setScreenSamplePixels();
    dominantColour(screen, mirrorManager.samplePixels, screenSampleCount);
    paletteOf(screen, mirrorManager.samplePixels, screenSampleCount, mirrorManager.paletteSize);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto width = input.ConsumeIntegralInRange<std::size_t>(0, fuzz::maxPixels);
    const auto height = input.ConsumeIntegralInRange<std::size_t>(
        0, fuzz::maxPixels / std::max<std::size_t>(1, width));
    const config::Document wanted = document(input);
    const std::string text = config::documentText(wanted);

    if (fuzz::isSeldom(data, size, 16))
        require(config::readText(text).problems.empty(), "the programs find nothing wrong with it");
    fuzz::resetManager(static_cast<unsigned>(wanted.displayID), width, height,
                       input.ConsumeIntegralInRange<std::size_t>(0, 128));
    require(fuzz::apply(text) == 1, "the library accepts it");
    requireDevices(wanted);
    if (fuzz::isSeldom(data, size, 256))
        requireColours();
    return 0;
}
