// The manager's colour methods on its own frame and grid, and the palette that it returns.
#include "tests/mirror/modeSteps.h"

#include <random>
#include <stdexcept>

using reference::packed;
using test::Pixels;

static bool averagingFails = false; // it prints a line first, and printing throws

// Replaces the C library's function.
extern "C" int puts(const char *text) {
    if (averagingFails && std::strcmp(text, "Resorting to averaging") == 0)
        throw std::runtime_error("scripted");
    return std::fputs(text, stdout) < 0 || std::fputc('\n', stdout) < 0 ? EOF : 1;
}

namespace {

class Analysis : public ModeSteps {
protected:
    Analysis() {
        lights({});
        mirrorManager.setScreenSamplePixels();
    }

    // Fetches into a buffer with guard bytes behind its 512 bytes.
    static std::string paletteText() {
        std::string buffer(512 + 64, '\x7e');
        EXPECT_EQ(mirrorManager.getPalette(buffer.data()), 0);
        EXPECT_EQ(buffer.substr(512), std::string(64, '\x7e'));
        return buffer.substr(0, 512);
    }

    // The first 512 bytes of a text, padded with zeros.
    static std::string bounded(std::string text) {
        text.resize(512, '\0');
        return text;
    }
};

Pixels noise(std::mt19937 &random, std::uint32_t mask = 0xffffff) {
    std::vector<std::uint32_t> words(6400);
    for (std::uint32_t &word : words)
        word = static_cast<std::uint32_t>(random()) & mask & 0xffffff;
    return test::screenSampledAs(words);
}

TEST_F(Analysis, APixelOfTheFrame) {
    Pixels screen = test::plainScreen(0);
    screen[1234] = 0x99c86432;
    show(screen);
    EXPECT_EQ(packed(mirrorManager.grabPixel(1234)), 0xc86432u);
    EXPECT_EQ(packed(mirrorManager.grabPixel(1235)), 0u);
    EXPECT_EQ(mirrorManager.grabPixel(1234).spare, 0.0);
}

TEST_F(Analysis, AnAverageOfTheFrame) {
    Pixels screen = test::plainScreen(0);
    screen[7] = 0xff0000;
    show(screen);
    int indices[] = {7, 8, 7, 9};
    EXPECT_EQ(packed(mirrorManager.averagePixels(indices, 2)), 180u << 16);
    EXPECT_EQ(packed(mirrorManager.averagePixels(indices, 1)), 0xff0000u);
    EXPECT_EQ(packed(mirrorManager.averagePixels(indices, 0)), 0u);
    EXPECT_EQ(packed(mirrorManager.averagePixels(indices, -1)), 0u);
}

TEST_F(Analysis, TheWeightOfASample) {
    for (int s = -20; s <= 120; ++s)
        for (int l = -20; l <= 120; ++l)
            EXPECT_EQ(mirrorManager.computeHSLBias({9, s, l}), reference::weightOf({9, s, l}));
}

TEST_F(Analysis, TheDominantColourAndThePaletteOfTheScreen) {
    std::mt19937 random(40);
    for (int round = 0; round < 60; ++round) {
        const Pixels screen = noise(random, static_cast<std::uint32_t>(random()) & 0x3f3f3f);
        show(screen);
        const auto words = test::samplesOf(screen);
        CaptureStdout();
        EXPECT_EQ(packed(mirrorManager.getDominantScreenColour()),
                  packed(reference::dominantOf(words).colour));
        GetCapturedStdout();
        const auto got = mirrorManager.getPaletteFromScreen(round);
        const auto wanted = reference::paletteOf(words, round);
        ASSERT_EQ(got.size(), wanted.size());
        for (std::size_t i = 0; i < got.size(); ++i)
            EXPECT_EQ(packed(got[i]), packed(wanted[i]));
    }
    EXPECT_TRUE(mirrorManager.palette.empty()); // neither stores anything
}

TEST_F(Analysis, TheLastSampleCountsOnlyForTheAverage) {
    Pixels screen = test::averagingTo({3, 3, 3});
    std::uint32_t &last = screen[89 * 100 + 89];
    last = 0;
    show(screen);
    const RGB without = mirrorManager.getDominantScreenColour();
    last = 0xffffff;
    show(screen);
    EXPECT_NE(packed(mirrorManager.getDominantScreenColour()), packed(without));
    EXPECT_EQ(packed(mirrorManager.getDominantScreenColour()),
              packed(reference::dominantOf(test::samplesOf(screen)).colour));
}

TEST_F(Analysis, AveragingIsSaid) {
    show(test::averagingTo({4, 4, 4}));
    CaptureStdout();
    EXPECT_EQ(packed(mirrorManager.getDominantScreenColour()), 0x040404u);
    EXPECT_EQ(GetCapturedStdout(), "Resorting to averaging\n");
}

TEST_F(Analysis, AnExceptionOnTheWayIsSaidAndTheColourBlack) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "in the sanitizers' builds no exception passes the C library's puts()";
#endif
    show(test::averagingTo({4, 4, 4}));
    CaptureStdout();
    averagingFails = true;
    EXPECT_EQ(packed(mirrorManager.getDominantScreenColour()), 0u);
    averagingFails = false;
    EXPECT_EQ(GetCapturedStdout(), "Error during dominant colour calculation\n");
}

TEST_F(Analysis, WithoutABufferTheScreenIsBlack) {
    show(test::plainScreen(0xffffffff));
    EXPECT_EQ(packed(mirrorManager.grabPixel(5)), 0xffffffu);
    mirrorManager.deInitScreen();
    int indices[] = {0, 1, 2};
    EXPECT_EQ(packed(mirrorManager.grabPixel(5)), 0u);
    EXPECT_EQ(packed(mirrorManager.averagePixels(indices, 3)), 0u);
    EXPECT_EQ(packed(mirrorManager.getDominantScreenColour()), 0u);
    EXPECT_EQ(paletteText(), bounded(R"({"palette":[{"R":0,"G":0,"B":0}]})"));
}

TEST_F(Analysis, PaletteText) {
    show(test::plainScreen(0));
    EXPECT_EQ(paletteText(), bounded(R"({"palette":[{"R":0,"G":0,"B":0}]})"));
    mirrorManager.paletteSize = 0;
    EXPECT_EQ(paletteText(), bounded(R"({"palette":[]})"));
    EXPECT_TRUE(mirrorManager.palette.empty());
}

TEST_F(Analysis, ThePaletteIsStored) {
    std::mt19937 random(41);
    const Pixels screen = noise(random);
    show(screen);
    mirrorManager.palette = {{1, 2, 3}};
    const std::string text = paletteText();
    EXPECT_EQ(text,
              bounded(reference::paletteText(reference::paletteOf(test::samplesOf(screen), 8))));
    EXPECT_EQ(bounded(reference::paletteText(mirrorManager.palette)), text);
    EXPECT_EQ(mirrorManager.palette.size(), 8u);
    EXPECT_TRUE(mutexIsFree());
}

TEST_F(Analysis, APaletteIsCutAt512Bytes) {
    std::mt19937 random(42);
    bool seen[3] = {};              // one byte short of the bound, the bound, one over it
    mirrorManager.paletteSize = 21; // some 490 to 535 bytes
    int rounds = 0;
    for (; rounds < 3000 && !(seen[0] && seen[1] && seen[2]); ++rounds) {
        const Pixels screen = noise(random, 0x1f1f1f | static_cast<std::uint32_t>(random()));
        const std::string whole = reference::paletteText(
            reference::paletteOf(test::samplesOf(screen), mirrorManager.paletteSize));
        if (whole.size() < 511 || whole.size() > 513)
            continue;
        show(screen);
        seen[whole.size() - 511] = true;
        EXPECT_EQ(paletteText(), bounded(whole));
    }
    EXPECT_TRUE(seen[0] && seen[1] && seen[2]) << rounds;
}

TEST_F(Analysis, MoreColoursThanThereAreHues) {
    std::mt19937 random(43);
    const Pixels screen = noise(random);
    show(screen);
    for (const int size : {80, 81, 1000}) {
        mirrorManager.paletteSize = size;
        const std::string text = paletteText();
        EXPECT_EQ(mirrorManager.palette.size(), 80u);
        EXPECT_EQ(text, bounded(reference::paletteText(mirrorManager.palette)));
    }
}

TEST_F(Analysis, ANegativeSizeFailsAndFreesTheMutex) {
    show(test::plainScreen(0xff0000));
    ASSERT_EQ(paletteText(), bounded(R"({"palette":[{"R":255,"G":0,"B":0}]})"));
    mirrorManager.paletteSize = -1;
    EXPECT_THROW(mirrorManager.getPaletteFromScreen(-1), std::length_error);
    std::string buffer(600, '\x7e');
    CaptureStdout();
    EXPECT_EQ(mirrorManager.getPalette(buffer.data()), -1);
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_EQ(buffer, std::string(600, '\x7e'));
    EXPECT_TRUE(mutexIsFree());
    ASSERT_EQ(mirrorManager.palette.size(), 1u); // still the previous palette
    EXPECT_EQ(packed(mirrorManager.palette[0]), 0xff0000u);
    mirrorManager.paletteSize = 8;
    EXPECT_EQ(paletteText(), bounded(R"({"palette":[{"R":255,"G":0,"B":0}]})"));
}

} // namespace
