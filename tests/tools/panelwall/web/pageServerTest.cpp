#include "tools/panelwall/web/pageServer.h"
#include "tests/tools/panelwall/web/httpClient.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <unistd.h>

using namespace panelwall;
using test::get;
using test::HttpClient;
using test::statusOf;

namespace {

class PanelwallPageServer : public testing::Test {
protected:
    void SetUp() override {
        server = std::make_unique<PageServer>(feed, picture);
        ASSERT_EQ(server->open("127.0.0.1", 0), "");
        const std::string url = server->url();
        port = std::stoi(url.substr(url.rfind(':') + 1));
    }

    // That the server still does its work.
    void expectServes() { EXPECT_EQ(statusOf(get(port, "/")), 200); }

    LiveFeed feed;
    ScreenPicture picture{0xfffffff0}; // no display has this identifier
    std::unique_ptr<PageServer> server;
    int port = 0;
};

} // namespace

TEST_F(PanelwallPageServer, ServesThePageWithNothingFromElsewhere) {
    const std::string page = get(port, "/");
    EXPECT_EQ(statusOf(page), 200);
    EXPECT_NE(page.find("Content-Type: text/html"), std::string::npos);
    EXPECT_NE(page.find("<title>panelwall</title>"), std::string::npos);
    EXPECT_NE(page.find("Content-Security-Policy: default-src 'none'; script-src 'self';"),
              std::string::npos);
    for (const char *wanted : {"frame-ancestors 'none'", "X-Frame-Options: DENY",
                               "Cross-Origin-Resource-Policy: same-origin"})
        EXPECT_NE(page.find(wanted), std::string::npos) << wanted;
    EXPECT_EQ(page.find("Access-Control-"), std::string::npos);
    EXPECT_EQ(page.find("://", page.find("\r\n\r\n")), std::string::npos);
    EXPECT_NE(get(port, "/main.js").find("Content-Type: text/javascript"), std::string::npos);
    EXPECT_NE(get(port, "/style.css").find("Content-Type: text/css"), std::string::npos);
    EXPECT_EQ(statusOf(get(port, "/../main.js")), 404);
    EXPECT_EQ(statusOf(get(port, "/index.html")), 404);
}

TEST_F(PanelwallPageServer, RefusesWhatIsNotForIt) {
    EXPECT_EQ(statusOf(get(port, "/", "wall.example")), 421);
    EXPECT_EQ(statusOf(get(port, "/", "127.0.0.1", "Host: localhost\r\n")), 421);
    EXPECT_EQ(statusOf(get(port, "/", "127.0.0.1", "Origin: http://example.com\r\n")), 403);
    EXPECT_EQ(statusOf(get(port, "/screen.png", "127.0.0.1", "Sec-Fetch-Site: cross-site\r\n")),
              403);
    for (const char *method : {"HEAD", "POST", "PUT", "DELETE", "OPTIONS", "PATCH"}) {
        HttpClient client(port);
        client.send(std::string(method) +
                    " / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 99999999\r\n\r\n");
        EXPECT_TRUE(client.waitEnd()) << method;
        EXPECT_EQ(statusOf(client.answer), 405) << method;
    }
    // Refusals say in words why, and are as closed as the page.
    const std::string refusal = get(port, "/", "wall.example");
    EXPECT_NE(refusal.find("Content-Security-Policy"), std::string::npos);
    EXPECT_NE(refusal.find("Ask for the wall by its address"), std::string::npos);
}

TEST_F(PanelwallPageServer, TellsReadersTheGreetingAndThenTheNewest) {
    HttpClient client(port);
    client.send("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    ASSERT_TRUE(client.waitFor("Content-Type: text/event-stream"));
    while (!feed.takeNewcomers())
        usleep(1000);
    feed.greet("data: hello\n\n");
    ASSERT_TRUE(client.waitFor("data: hello\n\n"));
    feed.publish("data: one\n\n");
    ASSERT_TRUE(client.waitFor("data: one\n\n"));
    feed.publish("data: two\n\n");
    ASSERT_TRUE(client.waitFor("data: two\n\n"));
}

TEST_F(PanelwallPageServer, SaysWhoUsesThePort) {
    PageServer second(feed, picture);
    const std::string reason = second.open("127.0.0.1", port);
    EXPECT_NE(reason.find("port " + std::to_string(port) + " is in use by "), std::string::npos)
        << reason;
    EXPECT_NE(reason.find("process " + std::to_string(getpid())), std::string::npos) << reason;
    EXPECT_NE(reason.find("--web PORT"), std::string::npos) << reason;
}

TEST_F(PanelwallPageServer, SaysWhatIsWrongWithAnAddress) {
    PageServer second(feed, picture);
    EXPECT_NE(second.open("localhost", 0).find("write an address such as 127.0.0.1"),
              std::string::npos);
    PageServer third(feed, picture);
    EXPECT_NE(third.open("192.0.2.1", 0).find("this machine has no such address"),
              std::string::npos);
}

TEST_F(PanelwallPageServer, SaysWhyThereIsNoPicture) {
    unsetenv("DISPLAY");
    const std::string answer = get(port, "/screen.png");
    EXPECT_EQ(statusOf(answer), 404);
    EXPECT_NE(answer.find("The mirrored display cannot be seen from panelwall"), std::string::npos);
}

TEST_F(PanelwallPageServer, SurvivesAnyBytes) {
    std::mt19937 random(7);
    std::string noise(20000, '\0');
    for (char &c : noise)
        c = static_cast<char>(random());
    std::string ranges = "Range: bytes=0-";
    while (ranges.size() < 8000)
        ranges += ",0-";
    const std::string host = "Host: 127.0.0.1\r\n";
    const std::string requests[] = {
        "\r\n\r\n",
        "GET\r\n\r\n",
        noise + "\r\n\r\n",
        std::string(20000, '\0'),
        std::string(100000, 'x'),
        "GET /" + std::string(100000, 'x') + " HTTP/1.1\r\n" + host + "\r\n",
        "GET /" + std::string(7000, '%') + " HTTP/1.1\r\n" + host + "\r\n",
        "GET / HTTP/1.1\r\n" + host + "X: " + std::string(1000000, 'x') + "\r\n\r\n",
        "GET / HTTP/1.1\r\n" + host + ranges + "\r\n\r\n",
        "GET / HTTP/1.1\r\n" + host + "Range: bytes=" + std::string(8000, '1') + "-\r\n\r\n",
        "GET / HTTP/1.1\r\n" + host + "Range: bytes=99999999999999999999999-\r\n\r\n",
        "GET / HTTP/1.1\r\n" + host + "Content-Length: -1\r\n\r\n",
        "GET / HTTP/1.1\r\n" + host + "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\n",
        "POST / HTTP/1.1\r\n" + host + "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\n",
        "GET http://[::1/ HTTP/9.9\r\n" + host + "\r\n",
        "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
    };
    for (const std::string &request : requests) {
        HttpClient client(port);
        client.send(request);
        EXPECT_TRUE(client.waitEnd()) << request.substr(0, 60);
        EXPECT_LT(client.answer.size(), 100000u) << request.substr(0, 60);
    }
    std::string lines = "GET / HTTP/1.1\r\n" + host;
    for (int i = 0; i < 100000; ++i)
        lines += "A: b\r\n";
    HttpClient client(port);
    client.send(lines + "\r\n");
    EXPECT_TRUE(client.waitEnd());
    EXPECT_NE(statusOf(client.answer), 200);
    expectServes();
}

TEST_F(PanelwallPageServer, RangesAreNotServed) {
    const std::string whole = get(port, "/main.js");
    const std::string part = get(port, "/main.js", "127.0.0.1", "Range: bytes=0-9,0-9,0-9\r\n");
    EXPECT_EQ(statusOf(part), 200);
    EXPECT_EQ(part, whole);
}

TEST_F(PanelwallPageServer, EndsRequestsThatTakeTooLong) {
    const auto begin = std::chrono::steady_clock::now();
    HttpClient slow(port);
    slow.send("GET / HTTP/1.1\r\nHost: 127");
    EXPECT_TRUE(slow.waitEnd());
    const auto passed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(passed, std::chrono::seconds(4));
    EXPECT_LT(passed, std::chrono::seconds(20));
}

TEST_F(PanelwallPageServer, ManyIdleConnectionsLeaveNoneForMoreAndThenAllAgain) {
    {
        std::vector<std::unique_ptr<HttpClient>> idle;
        for (std::size_t i = 0; i < PageServer::mostConnections; ++i)
            idle.push_back(std::make_unique<HttpClient>(port));
        HttpClient more(port);
        EXPECT_TRUE(more.waitEnd());
        EXPECT_EQ(statusOf(more.answer), 503);
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (statusOf(get(port, "/")) != 200)
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
}

TEST_F(PanelwallPageServer, ServesSoManyReadersAndSaysSoToMore) {
    std::vector<std::unique_ptr<HttpClient>> readers;
    for (int i = 0; i < PageServer::mostReaders; ++i) {
        readers.push_back(std::make_unique<HttpClient>(port));
        readers.back()->send("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        ASSERT_TRUE(readers.back()->waitFor("text/event-stream"));
    }
    EXPECT_EQ(statusOf(get(port, "/events")), 503);
    expectServes();
}

TEST_F(PanelwallPageServer, DropsReadersThatDoNotRead) {
    HttpClient client(port);
    client.send("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    ASSERT_TRUE(client.waitFor("text/event-stream"));
    while (!feed.takeNewcomers())
        usleep(1000);
    feed.greet("hello");
    // More than any buffer between the two ends holds.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (feed.hasReaders()) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        feed.publish(std::string(1 << 20, 'x'));
        usleep(10000);
    }
    expectServes();
}

TEST_F(PanelwallPageServer, StopsAtOnceWhateverIsOpen) {
    HttpClient reader(port);
    reader.send("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    ASSERT_TRUE(reader.waitFor("text/event-stream"));
    HttpClient halfway(port);
    halfway.send("GET / HT");
    const HttpClient idle(port);
    const auto begin = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    EXPECT_THROW(HttpClient{port}, std::runtime_error);
}
