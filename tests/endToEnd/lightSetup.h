// Lights of an end-to-end test: their configuration and the bytes they must receive.
#pragma once

#include "mirror/mirrorInterface.h"
#include "tests/support/lightReceiver.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace test {

struct PanelPlace {
    int id;
    int x;
    int y;
};

struct LightSetup {
    std::string ip;
    int controlVersion;
    int shapeType;
    double scaleFactor;
    std::vector<PanelPlace> panels;

    int port() const { return controlVersion == 1 ? 60221 : 60222; }
};

// A picture of the screen, 0xRRGGBB per pixel, rows packed.
struct Picture {
    int width;
    int height;
    std::vector<std::uint32_t> pixels;
};

Picture plain(int width, int height, std::uint32_t colour);
Picture noise(int width, int height, unsigned seed);

// The configuration document for these lights.
std::string documentOf(std::uint32_t displayID, int mode, const std::vector<LightSetup> &lights);

// The datagram that match mode sends to `light` for `picture`, computed without the library.
Datagram matchDatagram(const LightSetup &light, const Picture &picture);

// Waits for `wanted`. If `earlier` is given, every datagram before `wanted` must equal it, except
// one that was made while the new frame was being copied. Otherwise fails with a message.
testing::AssertionResult arrives(LightReceiver &receiver, const Datagram &wanted,
                                 const std::optional<Datagram> &earlier = std::nullopt);

// The identifiers that getDisplays lists, in its order.
std::vector<std::uint32_t> displayIDs();

// A run of the library with one light, observed at that light.
class OneLightRun : public testing::Test {
protected:
    explicit OneLightRun(const std::string &ip) : light{ip, 1, 0, 0.2, {{1, 40, 40}}} {}
    void TearDown() override { stopMirror(); }

    static int configure(std::string text) { return setMirrorConfig(text.data()); }
    // The configuration of the light, for the first display in the list.
    std::string document(int mode = 0) const {
        return documentOf(displayIDs().at(0), mode, {light});
    }

    // Configures and starts in match mode, unless another configuration is given.
    void start() { start(document()); }
    void start(const std::string &text);

    // The datagram for a screen of this colour.
    Datagram plainDatagram(std::uint32_t colour) const {
        return matchDatagram(light, plain(100, 100, colour));
    }
    // Waits until the light shows this colour, which must fill the screen.
    testing::AssertionResult showsPlain(std::uint32_t colour) {
        return arrives(receiver, plainDatagram(colour));
    }

    LightSetup light;
    LightReceiver receiver{light.ip, light.port()};
};

} // namespace test
