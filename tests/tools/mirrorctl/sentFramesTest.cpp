#include "tools/mirrorctl/sentFrames.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace mirrorctl;

static std::string textOf(const std::vector<std::string> &lines) {
    std::string devices;
    for (const std::string &line : lines)
        devices += (devices.empty() ? "" : ",") + (R"({"ip":"::1","animData":")" + line + "\"}");
    return R"({"numDevices":)" + std::to_string(lines.size()) + R"(,"devices":[)" + devices + "]}";
}

TEST(MirrorctlSentFrames, readsRecordsInTheirOrder) {
    const auto frames =
        readSentFrames(textOf({"3 12 1 255 0 0 0 5 65535 1 1 2 3 0 5", "1 7 1 0 0 9 0 5"}));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].panelCount, 3u);
    ASSERT_EQ(frames[0].records.size(), 2u);
    EXPECT_EQ(frames[0].records[0].id, 12u);
    EXPECT_EQ(frames[0].records[0].colour, (Colour{255, 0, 0}));
    EXPECT_EQ(frames[0].records[1].id, 65535u);
    EXPECT_EQ(frames[0].records[1].colour, (Colour{1, 2, 3}));
    ASSERT_EQ(frames[1].records.size(), 1u);
    EXPECT_EQ(frames[1].records[0].colour, (Colour{0, 0, 9}));
}

TEST(MirrorctlSentFrames, tellsNoFrameFromAFrameWithoutRecords) {
    const auto frames = readSentFrames(textOf({"0 ", "", ""}));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].panelCount, 0u);
    EXPECT_TRUE(frames[0].records.empty());
}

TEST(MirrorctlSentFrames, refusesWhatItDoesNotUnderstand) {
    for (const char *line : {"1 17", "1 17 1 0 0 0 0", "1 17 1 0 0 0 0 5 6", "1 17 1 a 0 0 0 5",
                             "1  17 1 0 0 0 0 5", "-1 ", "4294967296 "})
        EXPECT_THROW(readSentFrames(textOf({line})), std::runtime_error) << line;
    for (const char *text : {"", "[]", "{}", R"({"devices":1})", R"({"devices":[1]})",
                             R"({"devices":[{}]})", R"({"devices":[{"animData":1}]})"})
        EXPECT_THROW(readSentFrames(text), std::runtime_error) << text;
}

TEST(MirrorctlSentFrames, findsLight) {
    EXPECT_FALSE(showsLight({}));
    EXPECT_FALSE(showsLight(readSentFrames(textOf({"0 ", "1 7 1 0 0 0 0 5"}))));
    EXPECT_TRUE(showsLight(readSentFrames(textOf({"1 7 1 0 0 0 0 5", "1 7 1 0 1 0 0 5"}))));
}
