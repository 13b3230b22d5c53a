#include "tools/mirrorctl/frameShares.h"

#include <gtest/gtest.h>

using namespace mirrorctl;

using Ids = std::vector<std::int32_t>;
using Shares = std::optional<std::vector<std::size_t>>;

static config::DeviceEntry device(int controlVersion, const Ids &ids) {
    config::DeviceEntry entry;
    entry.controlVersion = controlVersion;
    for (const auto id : ids)
        entry.panels.push_back({id, 0, 0});
    return entry;
}

static SentFrame frame(std::size_t panelCount, const std::vector<unsigned> &ids) {
    SentFrame sent;
    sent.panelCount = panelCount;
    for (const unsigned id : ids)
        sent.records.push_back({id, {}});
    return sent;
}

TEST(MirrorctlFrameShares, fullFramesBelongToTheDevicesInOrder) {
    const std::vector<config::DeviceEntry> devices = {device(2, {1}), device(2, {1}),
                                                      device(2, {})};
    EXPECT_EQ(shareFrames({frame(1, {1}), frame(1, {1}), frame(0, {})}, devices),
              (Shares{{0, 1, 2}}));
}

TEST(MirrorctlFrameShares, panelsTellTheDevice) {
    const std::vector<config::DeviceEntry> devices = {device(2, {1, 2}), device(2, {3, 4}),
                                                      device(2, {5, 6})};
    EXPECT_EQ(shareFrames({frame(2, {4})}, devices), (Shares{{1}}));
    EXPECT_EQ(shareFrames({frame(2, {1, 2}), frame(2, {6})}, devices), (Shares{{0, 2}}));
    EXPECT_EQ(shareFrames({}, devices), (Shares{std::vector<std::size_t>{}}));
}

TEST(MirrorctlFrameShares, panelCountsTellTheDevice) {
    EXPECT_EQ(shareFrames({frame(2, {1})}, {device(2, {1}), device(2, {1, 2})}), (Shares{{1}}));
}

TEST(MirrorctlFrameShares, identifiersAreThoseOfTheDatagrams) {
    EXPECT_EQ(shareFrames({frame(1, {44})}, {device(2, {300}), device(1, {300})}), (Shares{{1}}));
    EXPECT_EQ(shareFrames({frame(1, {300})}, {device(2, {300}), device(1, {300})}), (Shares{{0}}));
    EXPECT_EQ(shareFrames({frame(1, {65535})}, {device(2, {-1})}), (Shares{{0}}));
}

TEST(MirrorctlFrameShares, severalWaysAreNone) {
    const std::vector<config::DeviceEntry> twins = {device(2, {1, 2}), device(2, {1, 2})};
    EXPECT_EQ(shareFrames({frame(2, {2})}, twins), std::nullopt);
    EXPECT_EQ(shareFrames({frame(2, {2}), frame(2, {1})}, twins), (Shares{{0, 1}}));
}

TEST(MirrorctlFrameShares, foreignFramesFitNobody) {
    const std::vector<config::DeviceEntry> devices = {device(2, {1, 2})};
    EXPECT_EQ(shareFrames({frame(2, {3})}, devices), std::nullopt);
    EXPECT_EQ(shareFrames({frame(2, {2, 1})}, devices), std::nullopt);
    EXPECT_EQ(shareFrames({frame(2, {1, 1})}, devices), std::nullopt);
    EXPECT_EQ(shareFrames({frame(2, {1}), frame(2, {2})}, devices), std::nullopt);
}
