#include "tests/tools/panelwall/wallSetup.h"
#include "tests/tools/panelwall/web/httpClient.h"

#include <sys/stat.h>

using namespace test;

using PanelwallWebProgram = WallTest;

// Waits until the wall has printed its page's address, and returns the address.
static PageAddress addressOf(Process &wall) {
    const std::string before = "live page: ";
    wall.waitFor(before);
    wall.waitFor("/\n", wall.out().find(before));
    return addressIn(wall.out());
}

TEST_F(PanelwallWebProgram, TellsItsReadersWhatArrives) {
    const auto config = writeConfig({deviceText("127.0.71.30", 2, {{1, 100, 100}, {2, 300, 100}})});
    Process wall = start({config, "--size", "640x480", "--web", "0"});
    const PageAddress page = addressOf(wall);
    HttpClient reader(page.port);
    EXPECT_TRUE(reader.readEvents(page.root));
    reader.waitFor("\"sent\":\"------------\"");
    EXPECT_TRUE(contains(reader.answer, "\"width\":640,\"height\":480,\"sizeFrom\":\"given\""));
    EXPECT_TRUE(contains(reader.answer, "\"panels\":[[1,100,100],[2,300,100]]"));
    sendTo("127.0.71.30", 60222, {0, 1, 0, 2, 10, 20, 30, 0, 0, 0});
    reader.waitFor("\"sent\":\"------0a141e\"");
    // A later reader receives what came before.
    HttpClient later(page.port);
    EXPECT_TRUE(later.readEvents(page.root));
    later.waitFor("event: past");
    later.waitFor(",\"------0a141e\"]]");
    end(wall);
    EXPECT_TRUE(reader.waitEnd());
}

TEST_F(PanelwallWebProgram, ShowsItsAddressOnTheTerminal) {
    Process wall =
        start({writeOnePanel("127.0.71.31"), "--web", "0"}, {.terminal = TerminalSize{}});
    wall.waitFor("panelwall http://127.0.0.1:");
    wall.waitFor("0/1 lit");
    wall.type("\x03");
    EXPECT_EQ(wall.finish().status, 0);
}

TEST_F(PanelwallWebProgram, WritesALinkThatOthersCannotRead) {
    const auto config = writeOnePanel("127.0.71.37");
    const auto link = folder.write("page.html", "something older");
    chmod(link.c_str(), 0644);
    Process wall = start({config, "--web", "0", "--web-link", link});
    const PageAddress page = addressOf(wall);
    EXPECT_EQ(fileText(link), "<!doctype html><meta http-equiv=\"refresh\" content=\"0; "
                              "url=http://127.0.0.1:" +
                                  std::to_string(page.port) + page.root + "\">\n");
    struct stat status {};
    ASSERT_EQ(stat(link.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);

    expectErrors(run({writeOnePanel("127.0.71.38"), "--web", "0", "--web-link",
                      folder.file("none/page.html")}),
                 3, {"a link to the live page cannot be written here: No such file"});
}

TEST_F(PanelwallWebProgram, APortInUseIsNamed) {
    Process wall = start({writeOnePanel("127.0.71.32"), "--web", "0"});
    const std::string port = std::to_string(addressOf(wall).port);
    expectErrors(run({writeOnePanel("127.0.71.33"), "--web", port}), 8,
                 {"port " + port + " is in use; ", "--web PORT"});
}

TEST_F(PanelwallWebProgram, SaysWhatIsNoPortOrAddress) {
    const auto config = writeOnePanel("127.0.71.34");
    for (const char *port : {"65536", "-1", "80a", "wall.json"})
        expectErrors(run({config, std::string("--web=") + port}), 2,
                     {"not a port from 0 to 65535"});
    expectErrors(run({config, "--web", "0", "--web-address", "localhost"}), 8,
                 {"write an address such as 127.0.0.1"});
    expectErrors(run({config, "--web", "0", "--web-address", "192.0.2.1"}), 8,
                 {"this machine has no such address"});
}

TEST_F(PanelwallWebProgram, ServesAReplayAndStaysAfterItsEnd) {
    const auto recording = folder.file("wall.rec");
    {
        Process wall = start({writeOnePanel("127.0.71.35"), "--record", recording});
        wall.waitFor("listening:");
        sendTo("127.0.71.35", 60222, {0, 1, 0, 1, 10, 20, 30, 0, 0, 0});
        wall.waitFor("total 1\n");
        end(wall);
    }
    Process wall = start({"--replay", recording, "--web", "0"});
    wall.waitFor("1/1 lit"); // a second after the recording's end
    const PageAddress page = addressOf(wall);
    HttpClient reader(page.port);
    EXPECT_TRUE(reader.readEvents(page.root));
    reader.waitFor("\"sent\":\"0a141e\"");
    EXPECT_TRUE(
        contains(reader.answer, "The recording has a pause here, or has been played to its end."));
    end(wall);
}

TEST_F(PanelwallWebProgram, OnAllAddressesNamesOneToGoTo) {
    Process wall = start({writeOnePanel("127.0.71.36"), "--web", "0", "--web-address", "0.0.0.0"});
    const PageAddress page = addressOf(wall);
    EXPECT_EQ(statusOf(get(page.port, page.root)), 200);
    EXPECT_EQ(statusOf(get(page.port, "/")), 404);
    end(wall);
}
