#include "tools/mirrorctl/snapshot/sentFrames.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace mirrorctl;

static std::string textOf(const std::vector<std::string> &lines) {
    std::string devices;
    for (const std::string &line : lines)
        devices += (devices.empty() ? "" : ",") + (R"({"ip":"::1","animData":")" + line + "\"}");
    return R"({"numDevices":)" + std::to_string(lines.size()) + R"(,"devices":[)" + devices + "]}";
}

TEST(MirrorctlSentFrames, ReadsRecordsInTheirOrder) {
    const auto frames =
        readSentFrames(textOf({"3 12 1 255 0 0 0 5 65535 1 1 2 3 0 5", "1 7 1 0 0 9 0 5"}));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].panelCount, 3u);
    ASSERT_EQ(frames[0].records.size(), 2u);
    EXPECT_EQ(frames[0].records[0].id, 12u);
    EXPECT_EQ(frames[0].records[0].colour, (lights::Colour{255, 0, 0}));
    EXPECT_EQ(frames[0].records[1].id, 65535u);
    EXPECT_EQ(frames[0].records[1].colour, (lights::Colour{1, 2, 3}));
    ASSERT_EQ(frames[1].records.size(), 1u);
    EXPECT_EQ(frames[1].records[0].colour, (lights::Colour{0, 0, 9}));
}

TEST(MirrorctlSentFrames, TellsNoFrameFromAFrameWithoutRecords) {
    const auto frames = readSentFrames(textOf({"0 ", "", ""}));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].panelCount, 0u);
    EXPECT_TRUE(frames[0].records.empty());
}

TEST(MirrorctlSentFrames, RefusesWhatItDoesNotUnderstand) {
    for (const char *line :
         {"1 17", "1 17 1 0 0 0 0", "1 17 1 0 0 0 0 5 6", "1 17 1 a 0 0 0 5", "1 17 1 256 0 0 0 5",
          "1 65536 1 0 0 0 0 5", "1  17 1 0 0 0 0 5", "-1 ", "4294967296 "})
        EXPECT_THROW(readSentFrames(textOf({line})), std::runtime_error) << line;
    for (const char *text : {"", "[]", "{}", R"({"devices":1})", R"({"devices":[1]})",
                             R"({"devices":[{}]})", R"({"devices":[{"animData":1}]})"})
        EXPECT_THROW(readSentFrames(text), std::runtime_error) << text;
}

TEST(MirrorctlSentFrames, FindsLight) {
    EXPECT_FALSE(showsLight({}));
    EXPECT_FALSE(showsLight(readSentFrames(textOf({"0 ", "1 7 1 0 0 0 0 5"}))));
    EXPECT_TRUE(showsLight(readSentFrames(textOf({"1 7 1 0 0 0 0 5", "1 7 1 0 1 0 0 5"}))));
}

using Ids = std::vector<std::int32_t>;
using Indices = std::optional<std::vector<std::size_t>>;

static config::DeviceEntry device(int controlVersion, const Ids &ids) {
    config::DeviceEntry entry;
    entry.controlVersion = controlVersion;
    for (const auto id : ids)
        entry.panels.push_back({id, 0, 0});
    return entry;
}

static SentFrame frame(std::size_t panelCount, const std::vector<std::uint16_t> &ids) {
    SentFrame sent;
    sent.panelCount = panelCount;
    for (const auto id : ids)
        sent.records.push_back({id, {}, 0});
    return sent;
}

TEST(MirrorctlDevicesOfFrames, FullFramesBelongToTheDevicesInOrder) {
    const std::vector<config::DeviceEntry> devices = {device(2, {1}), device(2, {1}),
                                                      device(2, {})};
    EXPECT_EQ(devicesOf({frame(1, {1}), frame(1, {1}), frame(0, {})}, devices),
              (Indices{{0, 1, 2}}));
}

TEST(MirrorctlDevicesOfFrames, PanelsTellTheDevice) {
    const std::vector<config::DeviceEntry> devices = {device(2, {1, 2}), device(2, {3, 4}),
                                                      device(2, {5, 6})};
    EXPECT_EQ(devicesOf({frame(2, {4})}, devices), (Indices{{1}}));
    EXPECT_EQ(devicesOf({frame(2, {1, 2}), frame(2, {6})}, devices), (Indices{{0, 2}}));
    EXPECT_EQ(devicesOf({}, devices), (Indices{std::vector<std::size_t>{}}));
}

TEST(MirrorctlDevicesOfFrames, PanelCountsTellTheDevice) {
    EXPECT_EQ(devicesOf({frame(2, {1})}, {device(2, {1}), device(2, {1, 2})}), (Indices{{1}}));
}

TEST(MirrorctlDevicesOfFrames, IdentifiersAreThoseOfTheDatagrams) {
    EXPECT_EQ(devicesOf({frame(1, {44})}, {device(2, {300}), device(1, {300})}), (Indices{{1}}));
    EXPECT_EQ(devicesOf({frame(1, {300})}, {device(2, {300}), device(1, {300})}), (Indices{{0}}));
    EXPECT_EQ(devicesOf({frame(1, {65535})}, {device(2, {-1})}), (Indices{{0}}));
}

TEST(MirrorctlDevicesOfFrames, SeveralWaysAreNone) {
    const std::vector<config::DeviceEntry> twins = {device(2, {1, 2}), device(2, {1, 2})};
    EXPECT_EQ(devicesOf({frame(2, {2})}, twins), std::nullopt);
    EXPECT_EQ(devicesOf({frame(2, {2}), frame(2, {1})}, twins), (Indices{{0, 1}}));
}

TEST(MirrorctlDevicesOfFrames, ForeignFramesFitNobody) {
    const std::vector<config::DeviceEntry> devices = {device(2, {1, 2})};
    EXPECT_EQ(devicesOf({frame(2, {3})}, devices), std::nullopt);
    EXPECT_EQ(devicesOf({frame(2, {2, 1})}, devices), std::nullopt);
    EXPECT_EQ(devicesOf({frame(2, {1, 1})}, devices), std::nullopt);
    EXPECT_EQ(devicesOf({frame(2, {1}), frame(2, {2})}, devices), std::nullopt);
}
