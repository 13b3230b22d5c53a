#include "tools/mirrorctl/lightlessDocument.h"

#include "tools/config/configDocument.h"

#include <gtest/gtest.h>

TEST(MirrorctlLightlessDocument, mirrorsTheDisplayOntoNoPanel) {
    for (const std::int32_t displayID : {5, -1}) {
        const auto reading = config::readText(mirrorctl::documentWithoutLights(displayID));
        ASSERT_TRUE(reading.problems.empty()) << reading.problems[0].message;
        EXPECT_EQ(reading.document.displayID, displayID);
        EXPECT_EQ(reading.document.mode, 3);
        ASSERT_EQ(reading.document.devices.size(), 1u);
        EXPECT_EQ(reading.document.devices[0].ip, "127.0.0.1");
        EXPECT_TRUE(reading.document.devices[0].panels.empty());
    }
}
