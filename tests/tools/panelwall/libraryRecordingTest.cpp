// Records what the library sends, sends the recording, and records that again.
#include "tests/support/virtualScreen.h"
#include "tests/tools/panelwall/wallSetup.h"

using namespace test;
using PanelwallRecord = WallTest;

// The identifier of the only display of the X server in use.
static std::string onlyDisplay() {
    const std::string list = Process({MIRRORCTL_PROGRAM, "displays", "--json"}).finish().out;
    const std::string member = "\"displayID\":";
    const auto at = list.find(member);
    EXPECT_NE(at, std::string::npos) << list;
    return std::to_string(std::stoul(list.substr(at + member.size())));
}

TEST_F(PanelwallRecord, OfTheLibrarySentAgainIsTheSame) {
    VirtualScreen screen(640, 480);
    screen.fill(0xFF0000);
    screen.use();
    std::string text = documentText({deviceText("127.0.45.31", 1, {{3, 100, 100}, {300, 300, 100}}),
                                     deviceText("127.0.45.32", 2, {{258, 500, 100}})});
    const std::string display = "\"displayID\":1";
    text.replace(text.find(display), display.size(), "\"displayID\":" + onlyDisplay());
    const auto document = folder.write("wall.json", text);
    const auto original = folder.file("original");
    const auto again = folder.file("again");

    {
        Process wall = start({document, "--record", original});
        wall.waitFor("listening: device 1");
        Process host({MIRRORCTL_PROGRAM, "run", document});
        wall.waitFor("1/1 lit");
        for (const std::uint32_t colour : {0x00FF00u, 0x123456u}) {
            screen.fill(colour);
            wall.waitFor("device 1  ", wall.out().size());
        }
        end(host);
        sendTo("127.0.45.31", 60221, {1, 2, 3});
        wall.waitFor("malformed 1");
        end(wall);
    }
    {
        Process wall = start({document, "--record", again});
        wall.waitFor("listening: device 1");
        const ProcessResult replay = run({"--replay", original, "--send", "--speed", "2"});
        EXPECT_EQ(replay.status, 0) << replay.err;
        wall.waitFor("malformed 1");
        end(wall);
    }
    const ProcessResult comparison = run({"--compare", original, again});
    expectOutput(comparison, 0, {"the same: 2 devices\n", "of them malformed 1 and 1; "});
    EXPECT_FALSE(contains(comparison.out, " 0 the same, "));
}
