// A snapshot holds the records sent to the lights. (Palette mode's is in paletteTest.cpp.)
#include "tests/endToEnd/wallRun.h"

#include <algorithm>
#include <atomic>
#include <thread>

using test::Record;

namespace {

class Snapshot : public test::WallRun {
protected:
    const std::vector<test::LightSetup> wall = {
        {"127.0.57.51", 1, 0, 0.3, {{3, 20, 20}, {300, 80, 80}}},
        {"127.0.57.52", 2, 1, 0.3, {{258, 50, 50}, {-1, 10, 90}, {7, 99, 0}}},
        {"127.0.57.53", 1, 0, 0.1, {}},
        {"127.0.57.54", 2, 0, 0.1, {}},
    };

    // The snapshot texts of all frames that have arrived at all lights, one per frame.
    std::vector<std::string> arrivedTexts() {
        std::vector<std::vector<std::string>> frames;
        for (std::size_t d = 0; d < lights.size(); ++d) {
            std::size_t f = 0;
            while (const auto datagram = receivers[d]->next(std::chrono::milliseconds(0))) {
                if (d == 0)
                    frames.emplace_back();
                if (f < frames.size())
                    frames[f++].push_back(
                        test::lineOf(static_cast<int>(lights[d].panels.size()),
                                     test::decode(lights[d].controlVersion, *datagram)));
            }
            EXPECT_EQ(f, frames.size()) << lights[d].ip;
        }
        std::vector<std::string> texts;
        for (const auto &lines : frames)
            texts.push_back(snapshotOf(lines));
        return texts;
    }

    static bool contains(const std::vector<std::string> &texts, const std::string &text) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }
};

TEST_F(Snapshot, OfMatchMode) {
    const test::Picture noise = test::noise(test::screenSide, test::screenSide, 9);
    start(0, wall);
    show(noise.pixels);
    std::vector<std::string> texts;
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(captureCurrentStreamFrames(), 0);
        texts.push_back(snapshotText());
    }
    ASSERT_EQ(stopMirror(), 1);
    const auto arrived = arrivedTexts();
    for (const std::string &text : texts)
        EXPECT_TRUE(contains(arrived, text)) << text;
}

// These modes serve a capture at the next change of colour, so the screen keeps changing meanwhile.
// The text shows a transition time of 5, whatever was sent.
class ChangingSnapshot : public Snapshot, public testing::WithParamInterface<int> {};

TEST_P(ChangingSnapshot, OfTheNextChange) {
    startAtPoll(GetParam(), wall);
    pollFreely();
    std::atomic<bool> done = false;
    std::thread painter([&] {
        constexpr std::uint32_t hues[] = {0xff0000, 0xffff00, 0x00ff00,
                                          0x00ffff, 0x0000ff, 0xff00ff};
        for (std::size_t i = 0; !done; ++i) {
            screen.fill(hues[i % std::size(hues)]);
            std::this_thread::sleep_for(std::chrono::milliseconds(60)); // interval between changes
        }
    });
    int results[3];
    std::string texts[3];
    for (int i = 0; i < 3; ++i) {
        results[i] = captureCurrentStreamFrames();
        texts[i] = snapshotText();
    }
    done = true;
    painter.join();
    ASSERT_EQ(stopMirror(), 1);
    const auto arrived = arrivedTexts();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(results[i], 0);
        EXPECT_TRUE(contains(arrived, texts[i])) << texts[i];
    }
}

// Without a change of colour the capture times out.
TEST_P(ChangingSnapshot, OfAStillScreenThereIsNone) {
    startAtPoll(GetParam(), wall);
    show(test::plainScreen(0xff0000));
    expectFrame(0xff0000);
    pollFreely();
    const auto asked = std::chrono::steady_clock::now();
    EXPECT_EQ(captureCurrentStreamFrames(), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(1010));
    EXPECT_EQ(getSizeOfStreamFrameJson(), 0);
    expectNothing();
}

INSTANTIATE_TEST_SUITE_P(Modes, ChangingSnapshot, testing::Values(1, 2), [](const auto &info) {
    return std::string(info.param == 1 ? "melt" : "fade");
});

TEST_F(Snapshot, WithoutARunThereIsNone) {
    start(0, wall);
    ASSERT_EQ(captureCurrentStreamFrames(), 0);
    const std::string text = snapshotText();
    ASSERT_GT(text.size(), 1u);
    ASSERT_EQ(stopMirror(), 1);

    const auto asked = std::chrono::steady_clock::now();
    EXPECT_EQ(captureCurrentStreamFrames(), -1);
    const auto waited = std::chrono::steady_clock::now() - asked;
    EXPECT_GE(waited, std::chrono::milliseconds(1010));
    EXPECT_LT(waited, std::chrono::seconds(5));
    EXPECT_EQ(getSizeOfStreamFrameJson(), 0);
    // The fetch writes an empty text, padded with zeros to the previous size.
    std::string buffer(text.size() + 64, '\x7e');
    EXPECT_EQ(getStreamFrameJson(buffer.data()), 0);
    EXPECT_EQ(buffer, std::string(text.size(), '\0') + std::string(64, '\x7e'));
}

} // namespace
