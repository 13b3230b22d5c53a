// The programs include only the host's interface, so they have their own copy of the delays.
#include "tools/config/modes.h"

#include "mirror/screenMirrorMac.h"

#include <gtest/gtest.h>

namespace {

TEST(ConfigFlashes, AreReckonedFromTheLibrarysDelays) {
    const MirrorManager fresh;
    EXPECT_DOUBLE_EQ(config::maxFlashes(0), 500.0 / fresh.matchFrameDelay);
    EXPECT_DOUBLE_EQ(config::maxFlashes(1), 500.0 / fresh.meltFrameDelay);
    EXPECT_DOUBLE_EQ(config::maxFlashes(2), 500.0 / fresh.fadeFrameDelay);
    EXPECT_EQ(config::maxFlashes(3), 0.0);
}

} // namespace
