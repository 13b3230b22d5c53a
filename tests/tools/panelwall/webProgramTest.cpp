#include "tests/support/process.h"
#include "tests/tools/panelwall/wallSetup.h"
#include "tests/tools/panelwall/web/httpClient.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>

using namespace test;

// The address of a page.
struct Address {
    int port = 0;
    std::string root; // "/TOKEN/"
};

// Waits until the wall has printed it.
static Address addressOf(Process &wall) {
    const std::string before = "live page: http://127.0.0.1:";
    wall.waitFor(before);
    wall.waitFor("/\n", wall.out().find(before));
    const auto begin = wall.out().find(before) + before.size();
    const auto root = wall.out().find('/', begin);
    return {std::stoi(wall.out().substr(begin)),
            wall.out().substr(root, wall.out().find('\n', begin) - root)};
}

// Begins to read the page's events.
static void beginReading(HttpClient &reader, const Address &page) {
    reader.send("GET " + page.root + "events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
}

TEST(PanelwallWebProgram, TellsItsReadersWhatArrives) {
    const Folder folder;
    const auto config = folder.write(
        "wall.json", documentText({deviceText("127.0.71.30", 2, {{1, 100, 100}, {2, 300, 100}})}));
    Process wall({PANELWALL_PROGRAM, config, "--size", "640x480", "--web", "0"});
    const Address page = addressOf(wall);
    HttpClient reader(page.port);
    beginReading(reader, page);
    reader.waitFor("\"sent\":\"------------\"");
    EXPECT_NE(reader.answer.find("\"width\":640,\"height\":480,\"sizeFrom\":\"given\""),
              std::string::npos);
    EXPECT_NE(reader.answer.find("\"panels\":[[1,100,100],[2,300,100]]"), std::string::npos);
    sendTo("127.0.71.30", 60222, {0, 1, 0, 2, 10, 20, 30, 0, 0, 0});
    reader.waitFor("\"sent\":\"------0a141e\"");
    // Whoever comes later is told what came before.
    HttpClient later(page.port);
    beginReading(later, page);
    later.waitFor("event: past");
    later.waitFor(",\"------0a141e\"]]");
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
    EXPECT_TRUE(reader.waitEnd());
}

TEST(PanelwallWebProgram, ShowsItsAddressOnTheTerminal) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.31", 2, {{1, 100, 100}})}));
    Process wall({PANELWALL_PROGRAM, config, "--web", "0"}, {.terminal = test::TerminalSize{}});
    wall.waitFor("panelwall http://127.0.0.1:");
    wall.waitFor("0/1 lit");
    wall.type("\x03");
    EXPECT_EQ(wall.finish().status, 0);
}

TEST(PanelwallWebProgram, WritesALinkThatOthersCannotRead) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.37", 2, {{1, 1, 1}})}));
    const auto link = folder.write("page.html", "something older");
    chmod(link.c_str(), 0644);
    Process wall({PANELWALL_PROGRAM, config, "--web", "0", "--web-link", link});
    const Address page = addressOf(wall);
    std::ostringstream text;
    text << std::ifstream(link).rdbuf();
    EXPECT_EQ(text.str(), "<!doctype html><meta http-equiv=\"refresh\" content=\"0; "
                          "url=http://127.0.0.1:" +
                              std::to_string(page.port) + page.root + "\">\n");
    struct stat status {};
    ASSERT_EQ(stat(link.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);

    const auto second =
        folder.write("two.json", documentText({deviceText("127.0.71.38", 2, {{1, 1, 1}})}));
    Process other(
        {PANELWALL_PROGRAM, second, "--web", "0", "--web-link", folder.file("none/page.html")});
    EXPECT_EQ(other.finish().status, 3);
    EXPECT_NE(other.err().find("a link to the live page cannot be written here: No such file"),
              std::string::npos)
        << other.err();
}

TEST(PanelwallWebProgram, APortInUseIsNamed) {
    const Folder folder;
    const auto first =
        folder.write("one.json", documentText({deviceText("127.0.71.32", 2, {{1, 1, 1}})}));
    const auto second =
        folder.write("two.json", documentText({deviceText("127.0.71.33", 2, {{1, 1, 1}})}));
    Process wall({PANELWALL_PROGRAM, first, "--web", "0"});
    const std::string port = std::to_string(addressOf(wall).port);
    Process other({PANELWALL_PROGRAM, second, "--web", port});
    EXPECT_EQ(other.finish().status, 8);
    EXPECT_NE(other.err().find("port " + port + " is in use; "), std::string::npos) << other.err();
}

TEST(PanelwallWebProgram, SaysWhatIsNoPort) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.34", 2, {{1, 1, 1}})}));
    for (const char *port : {"65536", "-1", "80a", "wall.json"}) {
        Process wall({PANELWALL_PROGRAM, config, std::string("--web=") + port});
        EXPECT_EQ(wall.finish().status, 2) << port;
        EXPECT_NE(wall.err().find("not a port from 0 to 65535"), std::string::npos) << wall.err();
    }
    Process wall({PANELWALL_PROGRAM, config, "--web", "0", "--web-address", "localhost"});
    EXPECT_EQ(wall.finish().status, 8);
    EXPECT_NE(wall.err().find("write an address such as 127.0.0.1"), std::string::npos);
}

TEST(PanelwallWebProgram, ServesAReplayAndStaysAfterItsEnd) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.35", 2, {{1, 100, 100}})}));
    const auto recording = folder.file("wall.rec");
    {
        Process wall({PANELWALL_PROGRAM, config, "--record", recording});
        wall.waitFor("listening:");
        sendTo("127.0.71.35", 60222, {0, 1, 0, 1, 10, 20, 30, 0, 0, 0});
        wall.waitFor("total 1\n");
        wall.signal(SIGINT);
        ASSERT_EQ(wall.finish().status, 0);
    }
    Process wall({PANELWALL_PROGRAM, "--replay", recording, "--web", "0"});
    wall.waitFor("1/1 lit"); // a second after the recording's end
    const Address page = addressOf(wall);
    HttpClient reader(page.port);
    beginReading(reader, page);
    reader.waitFor("\"sent\":\"0a141e\"");
    EXPECT_NE(reader.answer.find("The recording has a pause here, or has been played to its end."),
              std::string::npos);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
}

TEST(PanelwallWebProgram, OnAllAddressesNamesOneToGoTo) {
    const Folder folder;
    const auto config =
        folder.write("wall.json", documentText({deviceText("127.0.71.36", 2, {{1, 1, 1}})}));
    Process wall({PANELWALL_PROGRAM, config, "--web", "0", "--web-address", "0.0.0.0"});
    const Address page = addressOf(wall);
    EXPECT_EQ(statusOf(get(page.port, page.root)), 200);
    EXPECT_EQ(statusOf(get(page.port, "/")), 404);
    wall.signal(SIGINT);
    EXPECT_EQ(wall.finish().status, 0);
}
