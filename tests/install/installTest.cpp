// The installed files, and hosts that are built from them alone.
#include "tests/install/installed.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace {

class Install : public testing::Test {
protected:
    // Expects that the host mirrors onto the light at this address.
    static void expectMirrors(const std::string &host, const std::string &address) {
        test::VirtualScreen screen(400, 300);
        screen.use();
        test::LightReceiver light(address, 60222);
        const test::ProcessResult run = test::shell(host + " " + address + " 0");
        test::expectOutput(run, 0, {"palette: #000000\n"});
        EXPECT_TRUE(light.next());
    }

    // The compiler's flags for a host, including the loader's search path.
    std::string flags() const {
        const std::string pkgConfig =
            "PKG_CONFIG_PATH=" + installed.at(LIBDIR "/pkgconfig") + " pkg-config screenMirrorMac ";
        return "$(" + pkgConfig + "--cflags --libs) -Wl,-rpath,$(" + pkgConfig +
               "--variable=libdir) ";
    }

    test::Installed installed;
};

TEST_F(Install, PutsEachFileInItsUsualPlace) {
    std::vector<std::string> wanted;
    std::ifstream list(FILES);
    for (std::string line; std::getline(list, line);) {
        if (const auto at = line.find("-release.cmake"); at != std::string::npos)
            line.replace(at, std::string::npos, "-" CONFIGURATION ".cmake");
        wanted.push_back(line.starts_with("lib/") ? LIBDIR + line.substr(3) : line);
    }
    std::sort(wanted.begin(), wanted.end());
    EXPECT_EQ(test::filesBelow(installed.at("")), wanted);
}

TEST_F(Install, NamesNoPlaceWhereItWasMade) {
    const test::ProcessResult found =
        test::shell("cd " + installed.at("") + " && grep -rIlF -e " BUILD " -e " SOURCE " -e " +
                    installed.beside("first") + " .");
    EXPECT_EQ(found.out, "");
    for (const char *program : {"bin/mirrorctl", "bin/panelwall", LIBDIR "/libscreenMirrorMac.so"})
        EXPECT_EQ(test::shell("readelf -d " + installed.at(program) + " | grep -F " BUILD).out, "")
            << program;
}

TEST_F(Install, ProgramsFindTheLibraryAfterTheMove) {
    const test::ProcessResult loaded =
        test::shell("LD_TRACE_LOADED_OBJECTS=1 " + installed.at("bin/mirrorctl"));
    EXPECT_TRUE(test::contains(loaded.out,
                               "libscreenMirrorMac.so.1 => " + installed.at("bin/../" LIBDIR "/")));
    test::VirtualScreen screen(400, 300);
    screen.use();
    test::expectOutput(test::shell(installed.at("bin/mirrorctl") + " displays --json"), 0,
                       {"\"width\":400,\"height\":300"});
    EXPECT_EQ(test::shell(installed.at("bin/panelwall") + " --help").status, 0);
}

TEST_F(Install, AHostFindsThePackageWithCMake) {
    const std::string build = installed.beside("consumer");
    const test::ProcessResult made = test::shell(
        "cp -R " CONSUMER " " + installed.beside("source") + " && " CMAKE " -S " +
        installed.beside("source") + " -B " + build + " -DCMAKE_PREFIX_PATH=" + installed.at("") +
        " -DEXAMPLES=" + installed.examples() + " && " CMAKE " --build " + build);
    ASSERT_EQ(made.status, 0) << made.out;
    expectMirrors(build + "/host", "127.0.77.1");
}

TEST_F(Install, AHostIsBuiltWithPkgConfigAndACCompilerAlone) {
    const std::string host = installed.beside("host");
    const test::ProcessResult made =
        test::shell("cc -Wall -Wextra -Werror " + installed.examples() + "/c/mirrorScreen.c -o " +
                    host + " " + flags());
    ASSERT_EQ(made.status, 0) << made.out;
    expectMirrors(host, "127.0.77.2");
}

TEST_F(Install, AHostInCxxIsBuiltWithTheSystemsCompiler) {
    const std::string host = installed.beside("host");
    const test::ProcessResult made =
        test::shell("c++ -std=c++17 -Wall -Wextra -Werror " + installed.examples() +
                    "/cpp/mirrorScreen.cpp -o " + host + " " + flags());
    ASSERT_EQ(made.status, 0) << made.out;
    expectMirrors(host, "127.0.77.3");
}

TEST_F(Install, ThePythonHostLoadsIt) {
    expectMirrors("SCREEN_MIRROR_LIBRARY=" + installed.at(LIBDIR "/libscreenMirrorMac.so.1") +
                      " python3 " + installed.examples() + "/python/mirror_screen.py",
                  "127.0.77.4");
}

} // namespace
