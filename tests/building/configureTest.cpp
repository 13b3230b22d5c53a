// Which compiler is chosen, and with which flags it is called.
#include "tests/building/treeCopy.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

const std::string libraryAlone = " -DMIRROR_TESTS=OFF -DMIRROR_BENCH=OFF -DMIRROR_TOOLS=OFF ";

class Configure : public testing::Test {
protected:
    test::ProcessResult configure(const std::string &before, const std::string &after) const {
        return test::shell(test::TreeCopy::plain + before + " " CMAKE " -S " SOURCE " -B " +
                           build() + libraryAlone + after);
    }
    std::string build() const { return folder.file("build"); }

    // The compile commands of all sources.
    std::vector<std::string> commands() const {
        std::vector<std::string> found;
        std::ifstream database(build() + "/compile_commands.json");
        for (std::string line; std::getline(database, line);)
            if (line.find("\"command\":") != std::string::npos)
                found.push_back(line);
        return found;
    }

    test::Folder folder;
};

// The package manager finds no package, so all are missing.
TEST_F(Configure, TakesClangWhereNoCompilerWasChosenAndNamesMissingPackages) {
    const std::string query = folder.write("dpkg-query", "#!/bin/sh\nexit 1\n");
    std::filesystem::permissions(query, std::filesystem::perms::owner_all);
    const test::ProcessResult done =
        configure("CC= CXX= PATH=" + folder.file("") + ":\"$PATH\"", "");
    ASSERT_EQ(done.status, 0) << done.out;
    for (const char *part :
         {"The C compiler identification is Clang", "The CXX compiler identification is Clang",
          "apt-get install build-essential clang "})
        EXPECT_TRUE(test::contains(done.out, part));
}

TEST_F(Configure, SaysWhatToTypeWhereTheChosenCompilerHasNoBlocks) {
    const test::ProcessResult refused = configure("CC=gcc CXX=g++", "");
    EXPECT_NE(refused.status, 0);
    EXPECT_TRUE(test::contains(refused.out, "g++ has no blocks"));
    const auto typed = refused.out.find("cmake --fresh ");
    ASSERT_NE(typed, std::string::npos) << refused.out;
    const test::ProcessResult done = test::shell(
        "CC=gcc CXX=g++ " + refused.out.substr(typed, refused.out.find('\n', typed) - typed) +
        libraryAlone);
    EXPECT_EQ(done.status, 0) << done.out;
    EXPECT_FALSE(test::contains(done.out, "apt-get"));
}

TEST_F(Configure, NoBuildTypeSwitchesOffAssertionsOrFusesOperations) {
    const test::ProcessResult done = configure(
        "",
        "-G 'Ninja Multi-Config' -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_CXX_COMPILER=clang++ "
        "-DCMAKE_C_COMPILER=clang "
        "'-DCMAKE_CONFIGURATION_TYPES=Debug;Release;RelWithDebInfo;MinSizeRel'");
    ASSERT_EQ(done.status, 0) << done.out;
    int switchedOff = 0;
    for (const std::string &command : commands()) {
        const auto off = command.find(" -DNDEBUG");
        switchedOff += off != std::string::npos;
        EXPECT_TRUE(
            test::contains(command.substr(off == std::string::npos ? 0 : off), " -UNDEBUG"));
        EXPECT_TRUE(test::contains(command, " -ffp-contract=off"));
    }
    EXPECT_GT(switchedOff, 50); // CMake defines NDEBUG in two of these types
    // configuration.cpp does not compile without assertions.
    const test::ProcessResult made =
        test::shell(CMAKE " --build " + build() +
                    " --config RelWithDebInfo --target "
                    "mirror/CMakeFiles/mirrorCore.dir/RelWithDebInfo/configuration.cpp.o");
    EXPECT_EQ(made.status, 0) << made.out;
}

} // namespace
