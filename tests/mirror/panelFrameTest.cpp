#include "mirror/panelFrame.h"
#include "tests/mirror/manager.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(PanelFrame &frame) {
    return Bytes(frame.data(), frame.data() + frame.length());
}

class AnimData : public ManagerTest {
protected:
    static std::string line(Bytes frame, int numPanels, int controlVersion) {
        mirrorManager.streamFrames = {"earlier"};
        mirrorManager.getAnimDataFromFrame(frame.data(), numPanels, controlVersion);
        EXPECT_EQ(mirrorManager.streamFrames.size(), 2u);
        EXPECT_EQ(mirrorManager.streamFrames[0], "earlier");
        return mirrorManager.streamFrames[1];
    }
};

TEST(PanelFrame, NarrowLayout) {
    PanelFrame frame;
    frame.begin(1, 2);
    frame.add(3, {10, 20, 30}, 1);
    frame.add(300, {255, 0, 128}, 0x1ff);
    EXPECT_EQ(bytesOf(frame), (Bytes{2, 3, 1, 10, 20, 30, 0, 1, 44, 1, 255, 0, 128, 0, 0xff}));
    EXPECT_EQ(frame.recordCount(), 2);
}

TEST(PanelFrame, WideLayoutForEveryOtherVersion) {
    for (const int version : {0, 2, 3, -1, 2147483647}) {
        PanelFrame frame;
        frame.begin(version, 2);
        frame.add(258, {10, 20, 30}, 5);
        frame.add(-1, {1, 2, 3}, 0x12345);
        EXPECT_EQ(bytesOf(frame),
                  (Bytes{0, 2, 1, 2, 10, 20, 30, 0, 0, 5, 0xff, 0xff, 1, 2, 3, 0, 0x23, 0x45}));
    }
}

TEST(PanelFrame, HoldsAsManyRecordsAsAreAdded) {
    PanelFrame frame;
    frame.begin(2, 1);
    Bytes expected{0, 1};
    for (int p = 0; p < 3000; ++p) {
        frame.add(p, {1, 2, 3}, 7);
        for (const int byte : {p >> 8, p, 1, 2, 3, 0, 0, 7})
            expected.push_back(static_cast<unsigned char>(byte));
    }
    EXPECT_EQ(bytesOf(frame), expected);
    EXPECT_EQ(frame.recordCount(), 3000);
}

TEST(PanelFrame, WithoutPanelsIsTheHeaderAlone) {
    PanelFrame frame;
    frame.begin(1, 0);
    EXPECT_EQ(bytesOf(frame), Bytes{0});
    frame.begin(2, 0);
    EXPECT_EQ(bytesOf(frame), (Bytes{0, 0}));
}

TEST(PanelFrame, CountsKeepTheirLowBits) {
    PanelFrame frame;
    frame.begin(1, 300);
    EXPECT_EQ(bytesOf(frame), Bytes{44});
    frame.begin(2, 0x12345);
    EXPECT_EQ(bytesOf(frame), (Bytes{0x23, 0x45}));
    frame.begin(2, -1);
    EXPECT_EQ(bytesOf(frame), (Bytes{0xff, 0xff}));
}

TEST(PanelFrame, StartsAnewEachTime) {
    PanelFrame frame;
    frame.begin(1, 1);
    frame.add(1, {1, 1, 1}, 1);
    frame.begin(2, 0);
    EXPECT_EQ(bytesOf(frame), (Bytes{0, 0}));
    EXPECT_EQ(frame.recordCount(), 0);
}

TEST_F(AnimData, AlwaysSaysFrameCount1AndTransition5) {
    PanelFrame frame;
    frame.begin(1, 3);
    for (const int id : {12, 40, 7})
        frame.add(id, {255, 0, 0}, 99);
    EXPECT_EQ(line(bytesOf(frame), 3, 1), "3 12 1 255 0 0 0 5 40 1 255 0 0 0 5 7 1 255 0 0 0 5");
}

TEST_F(AnimData, ReadsWideIdentifiers) {
    EXPECT_EQ(line({0, 2, 1, 2, 9, 8, 7, 6, 0, 5, 255, 255, 0, 0, 0, 0, 1, 1}, 2, 2),
              "2 258 1 9 8 7 6 5 65535 1 0 0 0 0 5");
}

TEST_F(AnimData, WithoutPanelsIsTheCountAndASpace) {
    EXPECT_EQ(line({0}, 0, 1), "0 ");
    EXPECT_EQ(line({0, 0}, 0, 2), "0 ");
    EXPECT_EQ(line({0, 0}, -3, 2), "-3 ");
}

TEST_F(AnimData, MoreThan255NarrowPanelsAllStandInTheLine) {
    PanelFrame frame;
    frame.begin(1, 300);
    for (int i = 0; i < 300; ++i)
        frame.add(i, {1, 2, 3}, 1);
    const std::string text = line(bytesOf(frame), 300, 1);
    EXPECT_EQ(text.rfind("300 0 1 1 2 3 0 5 1 1 1 2 3 0 5 ", 0), 0u);
    EXPECT_EQ(std::count(text.begin(), text.end(), ' '), 300 * 7);
    EXPECT_TRUE(text.ends_with(" 43 1 1 2 3 0 5"));
}

TEST_F(AnimData, PartialFrameTellsTheFullCountAndTheRecordsSent) {
    PanelFrame frame;
    frame.begin(1, 1);
    frame.add(7, {1, 2, 3}, 12);
    EXPECT_EQ(animDataLine(frame.data(), frame.recordCount(), 30, 1), "30 7 1 1 2 3 0 5");
}

} // namespace
