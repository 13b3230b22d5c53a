// A tree that was copied with its build folder.
#include "tests/building/treeCopy.h"

#include <gtest/gtest.h>

namespace {

class CopiedTree : public testing::TestWithParam<const char *> {};

TEST_P(CopiedTree, IsToldToRemoveItsBuildFolder) {
    const test::TreeCopy copy;
    const test::ProcessResult run = test::shell(
        "cd " + copy.at("tree") +
        " && mkdir -p build/release && "
        "echo CMAKE_CACHEFILE_DIR:INTERNAL=/nowhere/build/release >build/release/CMakeCache.txt && "
        "scripts/" +
        GetParam());
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(test::contains(
        run.out, "build/release was made for another place, /nowhere/build/release, and "
                 "cannot be used here. Remove it and try again: rm -r " +
                     copy.at("tree/build/release")));
    EXPECT_FALSE(test::contains(run.out, "CMake Error"));
}

INSTANTIATE_TEST_SUITE_P(Scripts, CopiedTree, testing::Values("demo", "package"));

} // namespace
