// What the library sends, recorded; the recording sent again, and recorded once more.
#include "tests/support/virtualScreen.h"
#include "tests/tools/panelwall/child.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace test;

namespace {

// A document for the only display of the X server in use.
std::string config() {
    Child list({MIRRORCTL_PROGRAM, "displays", "--json"});
    EXPECT_EQ(list.waitExit(), 0) << list.errors;
    const std::string member = "\"displayID\":";
    const auto at = list.out.find(member);
    EXPECT_NE(at, std::string::npos) << list.out;
    const std::string display = std::to_string(std::stoul(list.out.substr(at + member.size())));
    std::string text = documentText({deviceText("127.0.45.31", 1, {{3, 100, 100}, {300, 300, 100}}),
                                     deviceText("127.0.45.32", 2, {{258, 500, 100}})});
    return text.replace(text.find(member), member.size() + 1, member + display);
}

void end(Child &wall) {
    wall.signal(SIGINT);
    EXPECT_EQ(wall.waitExit(), 0) << wall.errors;
}

} // namespace

TEST(PanelwallRecord, OfTheLibrarySentAgainIsTheSame) {
    VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    screen.use();
    const Folder folder;
    const auto document = folder.write("wall.json", config());
    const auto original = folder.file("original");
    const auto again = folder.file("again");

    {
        Child wall({PANELWALL_PROGRAM, document, "--record", original});
        ASSERT_TRUE(wall.waitFor("listening: device 1"));
        Child host({MIRRORCTL_PROGRAM, "run", document});
        ASSERT_TRUE(wall.waitFor("1/1 lit"));
        for (const std::uint32_t colour : {0x00FF00u, 0x123456u}) {
            screen.fill(colour);
            ASSERT_TRUE(wall.waitFor("device 1  ", wall.out.size()));
        }
        host.signal(SIGINT);
        EXPECT_EQ(host.waitExit(), 0) << host.errors;
        sendTo("127.0.45.31", 60221, {1, 2, 3});
        ASSERT_TRUE(wall.waitFor("malformed 1"));
        end(wall);
    }
    {
        Child wall({PANELWALL_PROGRAM, document, "--record", again});
        ASSERT_TRUE(wall.waitFor("listening: device 1"));
        Child replay({PANELWALL_PROGRAM, "--replay", original, "--send", "--speed", "2"});
        EXPECT_EQ(replay.waitExit(), 0) << replay.errors;
        ASSERT_TRUE(wall.waitFor("malformed 1"));
        end(wall);
    }
    Child comparison({PANELWALL_PROGRAM, "--compare", original, again});
    EXPECT_EQ(comparison.waitExit(), 0) << comparison.out << comparison.errors;
    EXPECT_NE(comparison.out.find("the same: 2 devices\n"), std::string::npos) << comparison.out;
    EXPECT_NE(comparison.out.find("of them malformed 1 and 1; "), std::string::npos);
    EXPECT_EQ(comparison.out.find(" 0 the same, "), std::string::npos) << comparison.out;
}
