// Installs below DESTDIR, as a package build does, and uninstalls again.
#include "tests/building/treeCopy.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

TEST(Uninstall, RemovesWhatWasInstalledBelowDestdirForAnyUser) {
    const test::TreeCopy copy;
    // Switches to another user if the test runs as root.
    std::string as = test::TreeCopy::plain;
    if (geteuid() == 0) {
        as += "-u CMAKE_C_COMPILER_LAUNCHER -u CMAKE_CXX_COMPILER_LAUNCHER "
              "setpriv --reuid=65534 --regid=65534 --clear-groups ";
        ASSERT_EQ(
            test::shell("chmod 755 " + copy.at("..") + " && chown -R 65534:65534 " + copy.at("."))
                .status,
            0);
    }
    const test::ProcessResult done =
        test::shell("cd " + copy.at("tree") + " && " + as +
                    "sh -e -c '" CMAKE " -S . -B build -DMIRROR_TESTS=OFF -DMIRROR_BENCH=OFF\n"
                    "export DESTDIR=" +
                    copy.at("root") +
                    "\n" CMAKE " --install build --component Manual\n"
                    "test -f \"$DESTDIR/usr/local/share/doc/screen-mirror/docs/README.md\"\n"
                    "mkdir -p \"$DESTDIR/usr/local/share/doc/other\"\n"
                    "touch \"$DESTDIR/usr/local/share/doc/screen-mirror/notes\"\n" CMAKE
                    " --build build --target uninstall\n"
                    "rm \"$DESTDIR/usr/local/share/doc/screen-mirror/notes\"\n'");
    ASSERT_EQ(done.status, 0) << done.out;
    EXPECT_EQ(test::shell("cd " + copy.at("root") + " && find . -not -type d -o -empty | sort").out,
              "./usr/local/share/doc/other\n./usr/local/share/doc/screen-mirror\n");

    const test::ProcessResult again =
        test::shell(CMAKE " --build " + copy.at("tree/build") + " --target uninstall");
    EXPECT_NE(again.status, 0);
    EXPECT_TRUE(test::contains(again.out, "Nothing has been installed from"));
}

} // namespace
