// The Debian package: what it holds and what it asks for.
#include "tests/install/installed.h"

#include <gtest/gtest.h>

namespace {

class DebianPackage : public testing::Test {
protected:
    void SetUp() override {
        const test::Output made =
            test::outputOf("cd " BUILD " && " CPACK " -G DEB -B " + folder.file("made") +
                           " && cd " + folder.file("made") + " && mv *.deb package.deb");
        ASSERT_EQ(made.status, 0) << made.text;
    }

    std::string field(const std::string &name) const {
        return test::outputOf("dpkg-deb -f " + package() + " " + name).text;
    }
    std::string package() const { return folder.file("made/package.deb"); }

    test::Folder folder;
};

TEST_F(DebianPackage, HoldsWhatIsInstalledAndAsksForWhatItLoads) {
    EXPECT_EQ(field("Package"), "screen-mirror\n");
    EXPECT_EQ(field("Version"), VERSION "\n");
    const std::string depends = " " + field("Depends");
    for (const char *library : {"libc6", "libstdc++6", "libblocksruntime0", "libxcb1",
                                "libxcb-damage0", "libxcb-randr0", "libxcb-shm0", "libxcb-xfixes0"})
        EXPECT_NE(depends.find(" " + std::string(library)), std::string::npos) << depends;

    const std::string root = folder.file("root");
    ASSERT_EQ(test::outputOf("dpkg-deb -x " + package() + " " + root).status, 0);
    // All below /usr, zsh's completions where Debian's zsh looks.
    std::vector<std::string> wanted = test::filesBelow(test::Installed().at(""));
    for (std::string &file : wanted) {
        if (const auto at = file.find("site-functions"); at != std::string::npos)
            file.replace(at, std::string("site-functions").size(), "vendor-completions");
        file = "usr/" + file;
    }
    EXPECT_EQ(test::filesBelow(root), wanted);

    const std::string libraries = root + "/usr/" LIBDIR;
    const test::Output run = test::outputOf("env -i " + root + "/usr/bin/mirrorctl --help");
    EXPECT_EQ(run.status, 0) << run.text;
    EXPECT_NE(
        test::outputOf("file -L " + libraries + "/libscreenMirrorMac.so").text.find("stripped"),
        std::string::npos);
}

} // namespace
