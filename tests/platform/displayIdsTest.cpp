#include "platform/objects/displayIds.h"

#include <gtest/gtest.h>
#include <map>

using platform::displayIdsOf;

namespace {

// Two names of the same hash, found by trying: there are only 2^31 hashes.
std::pair<std::string, std::string> collidingNames() {
    std::map<std::uint32_t, std::string> seen;
    for (int i = 0;; ++i) {
        const std::string name = "monitor" + std::to_string(i * 7919);
        const auto [entry, isNew] = seen.emplace(displayIdsOf({name}).at(0), name);
        if (!isNew)
            return {entry->second, name};
    }
}

} // namespace

TEST(DisplayIds, DependOnTheNameAlone) {
    const auto both = displayIdsOf({"DP-1", "HDMI-2"});
    const auto turned = displayIdsOf({"HDMI-2", "DP-1"});
    EXPECT_EQ(both.at(0), turned.at(1));
    EXPECT_EQ(both.at(1), turned.at(0));
    EXPECT_EQ(both.at(0), displayIdsOf({"DP-1"}).at(0));
}

TEST(DisplayIds, StayTheSameFromOneReleaseToTheNext) {
    // Existing configurations hold these numbers.
    EXPECT_EQ(displayIdsOf({"screen"}).at(0), 1438993425u);
}

TEST(DisplayIds, ArePositiveAndDifferent) {
    std::vector<std::string> names;
    for (int i = 0; i < 2000; ++i)
        names.push_back("DP-" + std::to_string(i));
    names.push_back("");
    std::map<std::uint32_t, int> seen;
    for (const std::uint32_t id : displayIdsOf(names)) {
        EXPECT_GT(static_cast<std::int32_t>(id), 0);
        EXPECT_EQ(++seen[id], 1);
    }
}

TEST(DisplayIds, ClashesAreResolvedInAnyOrderAlike) {
    const auto [first, second] = collidingNames();
    const std::uint32_t hash = displayIdsOf({first}).at(0);
    ASSERT_EQ(hash, displayIdsOf({second}).at(0));

    const auto ids = displayIdsOf({first, second});
    const auto turned = displayIdsOf({second, first});
    EXPECT_NE(ids.at(0), ids.at(1));
    EXPECT_EQ(ids.at(0), turned.at(1));
    EXPECT_EQ(ids.at(1), turned.at(0));
    EXPECT_EQ(ids.at(first < second ? 0 : 1), hash);
    EXPECT_EQ(ids.at(first < second ? 1 : 0), hash == 0x7fffffff ? 1 : hash + 1);
}

TEST(DisplayIds, OfEqualNamesDiffer) {
    const auto ids = displayIdsOf({"twin", "twin"});
    EXPECT_NE(ids.at(0), ids.at(1));
}
