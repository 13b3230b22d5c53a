// What the library sends, recorded; the recording sent again, and recorded once more.
#include "tests/support/process.h"
#include "tests/support/virtualScreen.h"
#include "tests/tools/panelwall/wallSetup.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace test;

namespace {

// A document for the only display of the X server in use.
std::string config() {
    Process list({MIRRORCTL_PROGRAM, "displays", "--json"});
    EXPECT_EQ(list.finish().status, 0) << list.err();
    const std::string member = "\"displayID\":";
    const auto at = list.out().find(member);
    EXPECT_NE(at, std::string::npos) << list.out();
    const std::string display = std::to_string(std::stoul(list.out().substr(at + member.size())));
    std::string text = documentText({deviceText("127.0.45.31", 1, {{3, 100, 100}, {300, 300, 100}}),
                                     deviceText("127.0.45.32", 2, {{258, 500, 100}})});
    return text.replace(text.find(member), member.size() + 1, member + display);
}

void end(Process &wall) {
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0) << wall.err();
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
        Process wall({PANELWALL_PROGRAM, document, "--record", original});
        wall.waitFor("listening: device 1");
        Process host({MIRRORCTL_PROGRAM, "run", document});
        wall.waitFor("1/1 lit");
        for (const std::uint32_t colour : {0x00FF00u, 0x123456u}) {
            screen.fill(colour);
            wall.waitFor("device 1  ", wall.out().size());
        }
        host.signal(SIGINT);
        EXPECT_EQ(host.finish().status, 0) << host.err();
        sendTo("127.0.45.31", 60221, {1, 2, 3});
        wall.waitFor("malformed 1");
        end(wall);
    }
    {
        Process wall({PANELWALL_PROGRAM, document, "--record", again});
        wall.waitFor("listening: device 1");
        Process replay({PANELWALL_PROGRAM, "--replay", original, "--send", "--speed", "2"});
        EXPECT_EQ(replay.finish().status, 0) << replay.err();
        wall.waitFor("malformed 1");
        end(wall);
    }
    Process comparison({PANELWALL_PROGRAM, "--compare", original, again});
    EXPECT_EQ(comparison.finish().status, 0) << comparison.out() << comparison.err();
    EXPECT_NE(comparison.out().find("the same: 2 devices\n"), std::string::npos)
        << comparison.out();
    EXPECT_NE(comparison.out().find("of them malformed 1 and 1; "), std::string::npos);
    EXPECT_EQ(comparison.out().find(" 0 the same, "), std::string::npos) << comparison.out();
}
