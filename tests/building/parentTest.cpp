// The library as part of a larger project.
#include "tests/building/treeCopy.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

// Uses make and a build type for which CMake defines NDEBUG. To save time, it does not optimise; it
// compiles one source at a time, since other tests run in parallel.
TEST(Parent, BuildsTheLibraryAndKeepsItsOwnFlags) {
    const test::TreeCopy copy;
    const test::ProcessResult made = test::shell(
        std::string(test::TreeCopy::plain) + "sh -c 'cp -R " PARENT " " + copy.at("parent") +
        " && " CMAKE " -S " + copy.at("parent") + " -B " + copy.at("build") +
        " -G \"Unix Makefiles\" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSCREEN_MIRROR=" +
        copy.at("tree") +
        " -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="
        "\"-O0 -DNDEBUG\" && " CMAKE " --build " +
        copy.at("build") + "'");
    ASSERT_EQ(made.status, 0) << made.out;

    // A document without a required member ends the process by an assertion.
    const test::ProcessResult run =
        test::shell("ulimit -c 0; " + copy.at("build/host") + "; exit $?");
    EXPECT_TRUE(test::contains(run.out, "Assertion"));
    EXPECT_EQ(run.status, 134) << run.out;

    std::ifstream database(copy.path("build/compile_commands.json"));
    int own = 0;
    for (std::string line; std::getline(database, line);) {
        EXPECT_FALSE(test::contains(line, "/tests/"));
        EXPECT_FALSE(test::contains(line, "/tools/"));
        if (line.find("\"command\":") == std::string::npos ||
            line.find("host.c\\\"") == std::string::npos)
            continue;
        ++own;
        for (const char *flag : {"-fblocks", "-UNDEBUG", "-ffp-contract", "-Wall", "tree\\\""})
            EXPECT_FALSE(test::contains(line, flag));
    }
    EXPECT_EQ(own, 1);
}

} // namespace
