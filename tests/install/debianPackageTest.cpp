// The Debian packages: their contents, their dependencies, and that Debian's own checker accepts
// them.
#include "tests/install/installed.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

const std::string library = "libscreenmirrormac1";
const std::string development = "libscreenmirrormac-dev";
const std::string programs = "screen-mirror";
const std::string manual = "screen-mirror-doc";

class DebianPackages : public testing::Test {
protected:
    void SetUp() override {
        const test::ProcessResult made =
            test::shell("cd " BUILD " && " CPACK " -G DEB -B " + folder.file("made"));
        ASSERT_EQ(made.status, 0) << made.out;
    }

    std::string package(const std::string &name) const {
        return folder.file("made/" + name + "_*.deb");
    }
    std::string field(const std::string &name, const std::string &field) const {
        return test::shell("dpkg-deb -f " + package(name) + " " + field).out;
    }
    std::string unpacked(const std::string &name) const {
        const std::string root = folder.file(name);
        const test::ProcessResult done = test::shell("dpkg-deb -x " + package(name) + " " + root);
        EXPECT_EQ(done.status, 0) << done.out;
        return root;
    }

    test::Folder folder;
};

// The name of an installed file in the Debian packages, where some files have another place or
// form.
std::string inDebian(std::string file) {
    if (const auto at = file.find("site-functions"); at != std::string::npos)
        file.replace(at, std::string("site-functions").size(), "vendor-completions");
    if (file.starts_with("share/man/"))
        file += ".gz";
    return "usr/" + file;
}

// Adds a package's files, except the three documents that every package must have.
void addFiles(std::vector<std::string> &files, const std::string &root,
              const std::string &package) {
    const std::string own = "usr/share/doc/" + package + "/";
    int papers = 0;
    for (const std::string &file : test::filesBelow(root))
        if (file == own + "copyright" || file == own + "changelog.gz" ||
            file == own + "changelog.Debian.gz")
            ++papers;
        else
            files.push_back(file);
    EXPECT_EQ(papers, 3) << package;
}

TEST_F(DebianPackages, HoldWhatIsInstalledAndAskForWhatTheyLoad) {
    std::vector<std::string> held;
    for (const std::string &package : {library, development, programs, manual}) {
        const std::string root = unpacked(package);
        addFiles(held, root, package);
        EXPECT_EQ(field(package, "Version"), VERSION "-0.1\n");
        EXPECT_EQ(test::shell("zgrep -c '(" VERSION "-0.1)' " + root + "/usr/share/doc/" + package +
                              "/changelog.Debian.gz")
                      .out,
                  "1\n");
    }
    std::sort(held.begin(), held.end());

    std::vector<std::string> wanted;
    for (const std::string &file : test::filesBelow(test::Installed().at("")))
        if (!file.ends_with("/LICENSE") && !file.ends_with("/copyright"))
            wanted.push_back(inDebian(file));
    std::sort(wanted.begin(), wanted.end());
    EXPECT_EQ(held, wanted);

    // A host that is already built needs only the library package.
    const std::string place = "usr/" LIBDIR "/libscreenMirrorMac.so";
    std::vector<std::string> files;
    addFiles(files, folder.file(library), library);
    EXPECT_EQ(files, (std::vector<std::string>{place + ".1", place + "." VERSION}));

    const std::string loads = " " + field(library, "Depends");
    for (const char *package : {"libc6", "libstdc++6", "libblocksruntime0", "libxau6", "libxcb1",
                                "libxcb-damage0", "libxcb-randr0", "libxcb-shm0", "libxcb-xfixes0"})
        EXPECT_TRUE(test::contains(loads, " " + std::string(package)));
    EXPECT_FALSE(test::contains(loads, "wayland"));
    EXPECT_TRUE(test::contains(field(library, "Recommends"), "libwayland-client0"));
    const std::string same = library + " (= " VERSION "-0.1)";
    EXPECT_EQ(field(development, "Depends"), same + "\n");
    const std::string programsLoad = field(programs, "Depends");
    for (const std::string &package :
         {same, std::string("libcpp-httplib0"), std::string("libpng16-16"), std::string("libxcb1")})
        EXPECT_TRUE(test::contains(programsLoad, package));
    EXPECT_EQ(field(manual, "Depends"), "\n");

    const std::string run = "env -i LD_LIBRARY_PATH=" + folder.file(library) + "/usr/" LIBDIR " " +
                            folder.file(programs) + "/usr/bin/mirrorctl --help";
    EXPECT_EQ(test::shell(run).status, 0) << run;
    // The loader searches this directory without a RUNPATH.
    EXPECT_EQ(
        test::shell("readelf -d " + folder.file(programs) + "/usr/bin/* | grep -c RUNPATH").out,
        "0\n");
}

TEST_F(DebianPackages, PassDebiansOwnCheck) {
    const test::ProcessResult checked =
        test::shell("lintian --allow-root --fail-on error,warning " + folder.file("made/*.deb"));
    EXPECT_EQ(checked.status, 0) << checked.out;
    EXPECT_EQ(checked.out, "");
}

} // namespace
