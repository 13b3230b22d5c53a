// The buffer has four bytes a pixel; a copy takes as many as the display's images have.
#include "tests/mirror/manager.h"

namespace {

class PixelDepth : public ManagerTest {
protected:
    static constexpr std::size_t pixels = 64 * 48;

    PixelDepth() { fake::platform().displays = {{1, 64, 48, 16}}; }

    static void expectHalfFilled() {
        for (std::size_t i = 0; i < pixels * 4; ++i)
            ASSERT_EQ(mirrorManager.frameBuffer[i], i < pixels * 2 ? 0xab : 0) << i;
    }
};

TEST_F(PixelDepth, AFrameOfADisplayOf16BitsFillsHalfTheBuffer) {
    ASSERT_EQ(configure(document("[]")), 1);
    EXPECT_EQ(mirrorManager.bytesPerPixel, 2u);
    const std::vector<std::uint32_t> screen(pixels, 0xabababab);
    fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &screen);
    expectHalfFilled();
}

TEST_F(PixelDepth, AGrabOfADisplayOf16BitsFillsHalfTheBuffer) {
    mirrorManager.displayID = 1;
    mirrorManager.initScreen();
    fake::platform().imageBytes.assign(pixels * 4, 0xab);
    mirrorManager.grabScreen();
    expectHalfFilled();
}

} // namespace
