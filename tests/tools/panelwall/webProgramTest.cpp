#include "tests/tools/panelwall/child.h"
#include "tests/tools/panelwall/wallSetup.h"
#include "tests/tools/panelwall/web/httpClient.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace test;

// The port in the address that the wall has printed.
static int portIn(const std::string &out) {
    const std::string before = "live page: http://127.0.0.1:";
    const auto at = out.find(before);
    return at == std::string::npos ? 0 : std::stoi(out.substr(at + before.size()));
}

TEST(PanelwallWebProgram, TellsItsReadersWhatArrives) {
    const Folder folder;
    const auto config = folder.write(
        "wall.json", documentText({deviceText("127.0.71.30", 2, {{1, 100, 100}, {2, 300, 100}})}));
    Child wall({PANELWALL_PROGRAM, config, "--size", "640x480", "--web", "0"});
    ASSERT_TRUE(wall.waitFor("live page: http://127.0.0.1:"));
    ASSERT_TRUE(wall.waitFor("/\n", wall.out.find("live page")));
    HttpClient reader(portIn(wall.out));
    reader.send("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    ASSERT_TRUE(reader.waitFor("\"sent\":\"------------\""));
    EXPECT_NE(reader.answer.find("\"width\":640,\"height\":480,\"sizeFrom\":\"given\""),
              std::string::npos);
    EXPECT_NE(reader.answer.find("\"panels\":[[1,100,100],[2,300,100]]"), std::string::npos);
    sendTo("127.0.71.30", 60222, {0, 1, 0, 2, 10, 20, 30, 0, 0, 0});
    EXPECT_TRUE(reader.waitFor("\"sent\":\"------0a141e\""));
    // Whoever comes later is told what came before.
    HttpClient later(portIn(wall.out));
    later.send("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    EXPECT_TRUE(later.waitFor("event: past"));
    EXPECT_TRUE(later.waitFor(",\"------0a141e\"]]"));
    wall.signal(SIGINT);
    EXPECT_EQ(wall.waitExit(), 0);
    EXPECT_TRUE(reader.waitEnd());
}

TEST(PanelwallWebProgram, ShowsItsAddressOnTheTerminal) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.31", 2, {{1, 100, 100}})}));
    Child wall({PANELWALL_PROGRAM, config, "--web", "0"}, Child::Output::terminal);
    EXPECT_TRUE(wall.waitFor("panelwall http://127.0.0.1:"));
    EXPECT_TRUE(wall.waitFor("0/1 lit"));
    wall.type("\x03");
    EXPECT_EQ(wall.waitExit(), 0);
}

TEST(PanelwallWebProgram, APortInUseIsNamedWithItsUser) {
    const Folder folder;
    const auto first =
        folder.write("one.json", documentText({deviceText("127.0.71.32", 2, {{1, 1, 1}})}));
    const auto second =
        folder.write("two.json", documentText({deviceText("127.0.71.33", 2, {{1, 1, 1}})}));
    Child wall({PANELWALL_PROGRAM, first, "--web", "0"});
    ASSERT_TRUE(wall.waitFor("live page: "));
    ASSERT_TRUE(wall.waitFor("/\n", wall.out.find("live page")));
    const std::string port = std::to_string(portIn(wall.out));
    Child other({PANELWALL_PROGRAM, second, "--web", port});
    EXPECT_EQ(other.waitExit(), 8);
    EXPECT_NE(other.errors.find("port " + port + " is in use by panelwall, process " +
                                std::to_string(wall.pid())),
              std::string::npos)
        << other.errors;
}

TEST(PanelwallWebProgram, SaysWhatIsNoPort) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.34", 2, {{1, 1, 1}})}));
    for (const char *port : {"65536", "-1", "80a", "wall.json"}) {
        Child wall({PANELWALL_PROGRAM, config, std::string("--web=") + port});
        EXPECT_EQ(wall.waitExit(), 2) << port;
        EXPECT_NE(wall.errors.find("not a port from 0 to 65535"), std::string::npos) << wall.errors;
    }
    Child wall({PANELWALL_PROGRAM, config, "--web", "0", "--web-address", "localhost"});
    EXPECT_EQ(wall.waitExit(), 8);
    EXPECT_NE(wall.errors.find("write an address such as 127.0.0.1"), std::string::npos);
}

TEST(PanelwallWebProgram, ServesAReplayAndStaysAfterItsEnd) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.35", 2, {{1, 100, 100}})}));
    const auto recording = folder.file("wall.rec");
    {
        Child wall({PANELWALL_PROGRAM, config, "--record", recording});
        ASSERT_TRUE(wall.waitFor("listening:"));
        sendTo("127.0.71.35", 60222, {0, 1, 0, 1, 10, 20, 30, 0, 0, 0});
        ASSERT_TRUE(wall.waitFor("total 1\n"));
        wall.signal(SIGINT);
        ASSERT_EQ(wall.waitExit(), 0);
    }
    Child wall({PANELWALL_PROGRAM, "--replay", recording, "--web", "0"});
    ASSERT_TRUE(wall.waitFor("1/1 lit")); // a second after the recording's end
    HttpClient reader(portIn(wall.out));
    reader.send("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    EXPECT_TRUE(reader.waitFor("\"sent\":\"0a141e\""));
    EXPECT_NE(reader.answer.find("The recording has a pause here, or has been played to its end."),
              std::string::npos);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.waitExit(), 0);
}

TEST(PanelwallWebProgram, OnAllAddressesNamesOneToGoTo) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.36", 2, {{1, 1, 1}})}));
    Child wall({PANELWALL_PROGRAM, config, "--web", "0", "--web-address", "0.0.0.0"});
    ASSERT_TRUE(wall.waitFor("live page: http://127.0.0.1:"));
    ASSERT_TRUE(wall.waitFor("/\n", wall.out.find("live page")));
    EXPECT_EQ(statusOf(get(portIn(wall.out), "/")), 200);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.waitExit(), 0);
}
