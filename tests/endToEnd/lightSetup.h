// Lights of an end-to-end test: what the configuration says of them, and which bytes they must get.
#pragma once

#include "tests/support/lightReceiver.h"

#include <cstdint>
#include <gtest/gtest.h>
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

// A picture of the screen, 0xRRGGBB a pixel, rows packed.
struct Picture {
    int width;
    int height;
    std::vector<std::uint32_t> pixels;
};

Picture plain(int width, int height, std::uint32_t colour);
Picture noise(int width, int height, unsigned seed);

// The configuration document for these lights.
std::string documentOf(std::uint32_t displayID, int mode, const std::vector<LightSetup> &lights);

// The datagram that match mode sends to `light` for `picture`, worked out on its own.
Datagram matchDatagram(const LightSetup &light, const Picture &picture);

// Waits for `wanted`; every datagram before it must be `earlier`, but for one that was made while
// the new frame was being copied. False with a message otherwise.
testing::AssertionResult arrives(LightReceiver &receiver, const Datagram &wanted,
                                 const Datagram &earlier);

// The identifiers that getDisplays lists, in its order.
std::vector<std::uint32_t> displayIDs();

} // namespace test
