#include "tests/mirror/manager.h"

#include <vector>

namespace {

TEST(Defaults, OfAFreshManager) {
    const MirrorManager fresh;
    EXPECT_EQ(fresh.matchTransitionTime, 1);
    EXPECT_EQ(fresh.meltTransitionTimeMin, 2);
    EXPECT_EQ(fresh.meltTransitionTimeRange, 9);
    EXPECT_EQ(fresh.fadeTransitionTime, 5);
    EXPECT_EQ(fresh.paletteTransitionTimeMin, 10);
    EXPECT_EQ(fresh.paletteTransitionTimeRange, 5);
    EXPECT_EQ(fresh.matchFrameDelay, 42);
    EXPECT_EQ(fresh.meltFrameDelay, 99);
    EXPECT_EQ(fresh.fadeFrameDelay, 149);
    EXPECT_EQ(fresh.paletteFrameDelay, 99);
    EXPECT_EQ(fresh.paletteSize, 8);
    EXPECT_EQ(fresh.minimumFrameTime, 0.03);
    for (const std::int32_t sample : fresh.samplePixels)
        ASSERT_EQ(sample, 0);
    EXPECT_FALSE(fresh.mirrorThread.joinable());
    EXPECT_EQ(fresh.screenWidth, 0u);
    EXPECT_EQ(fresh.screenHeight, 0u);
    EXPECT_EQ(fresh.bytesPerPixel, 0u);
    EXPECT_EQ(fresh.image, nullptr);
    EXPECT_EQ(fresh.dataProvider, nullptr);
    EXPECT_EQ(fresh.imageData, nullptr);
    EXPECT_EQ(fresh.displayID, 0u);
    EXPECT_EQ(fresh.displayStream, nullptr);
    EXPECT_EQ(fresh.mode, 0);
    EXPECT_EQ(fresh.frameBuffer, nullptr);
    EXPECT_EQ(fresh.displayCount, 0u);
    EXPECT_FALSE(fresh.running);
    EXPECT_FALSE(fresh.captureRequested);
    EXPECT_TRUE(fresh.devices.empty());
    EXPECT_TRUE(fresh.streamFrames.empty());
    EXPECT_EQ(fresh.streamFrameJson.GetSize(), 0u);
    EXPECT_EQ(fresh.streamFrameJsonSize, 0);
    EXPECT_TRUE(fresh.palette.empty());
}

template <class... Fields> void expectRisingAddresses(const Fields &...fields) {
    const std::vector<const void *> addresses = {&fields...};
    for (std::size_t i = 1; i < addresses.size(); ++i)
        EXPECT_LT(addresses[i - 1], addresses[i]) << "field " << i + 1;
}

TEST(Defaults, FieldsStandInTheirOrder) {
    const MirrorManager m;
    expectRisingAddresses(
        m.matchTransitionTime, m.meltTransitionTimeMin, m.meltTransitionTimeRange,
        m.fadeTransitionTime, m.paletteTransitionTimeMin, m.paletteTransitionTimeRange,
        m.matchFrameDelay, m.meltFrameDelay, m.fadeFrameDelay, m.paletteFrameDelay, m.paletteSize,
        m.minimumFrameTime, m.samplePixels, m.mirrorThread, m.mutex, m.screenWidth, m.screenHeight,
        m.bytesPerPixel, m.image, m.dataProvider, m.imageData, m.displayID, m.displayStream, m.mode,
        m.frameBuffer, m.displayCount, m.running, m.captureRequested, m.devices, m.streamFrames,
        m.streamFrameJson, m.streamFrameJsonSize, m.palette);
    EXPECT_EQ(&m.paletteFrameDelay, &m.matchTransitionTime + 9);
}

TEST(Defaults, InstanceIsTheGlobalManager) {
    EXPECT_EQ(MirrorManager::instance, &mirrorManager);
}

TEST(Defaults, PanelAndDeviceAndSocketFieldsStandInTheirOrder) {
    const Panel p;
    expectRisingAddresses(p.panelID, p.centroidX, p.centroidY, p.unused, p.samplePixels,
                          p.numSamplePixels);
    EXPECT_EQ(sizeof(Panel), (4 + 100 + 1) * 4u);
    const Device d("", 0, 0, 0, {}, 0, 0, 0, 0);
    expectRisingAddresses(d.ip, d.controlVersion, d.shapeType, d.numPanels, d.scaleFactor, d.panels,
                          d.screenWidth, d.screenHeight, d.bytesPerPixel);
    const UdpSocket s;
    expectRisingAddresses(s.socketFd, s.ipAddr, s.spareIpAddr, s.port, s.sinFamily, s.connected,
                          s.localAddr, s.remoteAddr, s.timeout);
    EXPECT_EQ(sizeof s.localAddr, 128u);
    const RGB rgb;
    expectRisingAddresses(rgb.r, rgb.g, rgb.b, rgb.spare);
    const HSL hsl;
    expectRisingAddresses(hsl.h, hsl.s, hsl.l);
}

} // namespace
