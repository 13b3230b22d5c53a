#include "tools/panelwall/web/pageServer.h"
#include "tests/support/expectations.h"
#include "tests/tools/panelwall/web/httpClient.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <random>
#include <unistd.h>

using namespace panelwall;
using test::contains;
using test::get;
using test::HttpClient;
using test::statusOf;

namespace {

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

class PanelwallPageServer : public testing::Test {
protected:
    void SetUp() override {
        server = std::make_unique<PageServer>(feed, picture);
        ASSERT_EQ(server->open("127.0.0.1", 0), "");
        const test::PageAddress address = test::addressIn(server->url());
        port = address.port;
        root = address.root;
    }

    // Expects that the server still works.
    void expectServes() { EXPECT_EQ(statusOf(get(port, root)), 200); }

    // Waits for the next reader and greets it.
    void greet(const std::string &text) {
        pollfd newcomer{feed.fd(), POLLIN, 0};
        ASSERT_EQ(poll(&newcomer, 1, 30000), 1);
        ASSERT_TRUE(feed.takeNewcomers());
        feed.greet(text);
    }

    using Clients = std::vector<std::unique_ptr<HttpClient>>;

    Clients open(int count) const {
        Clients clients;
        for (int i = 0; i < count; ++i)
            clients.push_back(std::make_unique<HttpClient>(port));
        return clients;
    }

    // Expects that `count` clients are soon told that there are too many, no matter which ones.
    static void expectRefusals(const Clients &clients, std::ptrdiff_t count) {
        const auto isRefused = [](const std::unique_ptr<HttpClient> &client) {
            return client->waitEnd(std::chrono::milliseconds(5)) && statusOf(client->answer) == 503;
        };
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (std::count_if(clients.begin(), clients.end(), isRefused) != count)
            ASSERT_LT(std::chrono::steady_clock::now(), deadline);
    }

    LiveFeed feed;
    ScreenPicture picture{0xfffffff0}; // no display has this identifier
    std::unique_ptr<PageServer> server;
    int port = 0;
    std::string root; // "/TOKEN/"
};

} // namespace

TEST_F(PanelwallPageServer, ServesThePageWithNothingFromElsewhere) {
    const std::string page = get(port, root);
    EXPECT_EQ(statusOf(page), 200);
    for (const char *wanted :
         {"Content-Type: text/html", "<title>panelwall</title>",
          "Content-Security-Policy: default-src 'none'; script-src 'self';",
          "frame-ancestors 'none'", "X-Frame-Options: DENY", "Referrer-Policy: no-referrer",
          "Cross-Origin-Resource-Policy: same-origin"})
        EXPECT_TRUE(contains(page, wanted));
    EXPECT_FALSE(contains(page, "Access-Control-"));
    EXPECT_EQ(page.find("://", page.find("\r\n\r\n")), std::string::npos);
    EXPECT_TRUE(contains(get(port, root + "main.js"), "Content-Type: text/javascript"));
    EXPECT_TRUE(contains(get(port, root + "style.css"), "Content-Type: text/css"));
    EXPECT_EQ(statusOf(get(port, root + "../main.js")), 404);
    EXPECT_EQ(statusOf(get(port, root + "index.html")), 404);
}

TEST_F(PanelwallPageServer, TellsNothingToThoseWhoDoNotKnowItsAddress) {
    const std::string answer = get(port, "/");
    for (const std::string &path :
         {std::string("/"), std::string("/events"), std::string("/screen.png"),
          root.substr(0, root.size() - 1), root.substr(1), "/" + root, "/x" + root,
          "/%2e%2e" + root + "../", "/" + std::string(22, 'A') + "/"})
        EXPECT_EQ(get(port, path), answer) << path;
    EXPECT_EQ(statusOf(answer), 404);
    EXPECT_TRUE(contains(answer, "\r\n\r\nOpen the whole address that panelwall has printed.\n"));
    EXPECT_TRUE(contains(answer, "Referrer-Policy: no-referrer"));
    PageServer other(feed, picture);
    ASSERT_EQ(other.open("127.0.0.1", 0), "");
    EXPECT_FALSE(contains(other.url(), root));
}

TEST_F(PanelwallPageServer, RefusesWhatIsNotForIt) {
    EXPECT_EQ(statusOf(get(port, root, "wall.example")), 421);
    EXPECT_EQ(statusOf(get(port, root, "127.0.0.1", "Host: localhost\r\n")), 421);
    EXPECT_EQ(statusOf(get(port, root, "127.0.0.1", "Origin: http://example.com\r\n")), 403);
    EXPECT_EQ(
        statusOf(get(port, root + "screen.png", "127.0.0.1", "Sec-Fetch-Site: cross-site\r\n")),
        403);
    for (const char *method : {"HEAD", "POST", "PUT", "DELETE", "OPTIONS", "PATCH"}) {
        HttpClient client(port);
        client.send(std::string(method) + " " + root +
                    " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 99999999\r\n\r\n");
        EXPECT_TRUE(client.waitEnd()) << method;
        EXPECT_EQ(statusOf(client.answer), 405) << method;
    }
    // Refusals give the reason in words, and have the same security policy as the page.
    const std::string refusal = get(port, root, "wall.example");
    EXPECT_TRUE(contains(refusal, "Content-Security-Policy"));
    EXPECT_TRUE(contains(refusal, "Ask for the wall by its address"));
}

TEST_F(PanelwallPageServer, TellsReadersTheGreetingAndThenTheNewest) {
    HttpClient client(port);
    ASSERT_TRUE(client.readEvents(root));
    greet("data: hello\n\n");
    ASSERT_TRUE(client.waitFor("data: hello\n\n"));
    feed.publish("data: one\n\n");
    ASSERT_TRUE(client.waitFor("data: one\n\n"));
    feed.publish("data: two\n\n");
    ASSERT_TRUE(client.waitFor("data: two\n\n"));
}

TEST_F(PanelwallPageServer, SaysWhyThereIsNoPicture) {
    unsetenv("DISPLAY");
    const std::string answer = get(port, root + "screen.png");
    EXPECT_EQ(statusOf(answer), 404);
    EXPECT_TRUE(contains(answer, "The mirrored display cannot be seen from panelwall"));
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
    const std::string head = "GET " + root + " HTTP/1.1\r\n" + host;
    const std::string requests[] = {
        "\r\n\r\n",
        "GET\r\n\r\n",
        noise + "\r\n\r\n",
        std::string(20000, '\0'),
        std::string(100000, 'x'),
        "GET " + root + std::string(100000, 'x') + " HTTP/1.1\r\n" + host + "\r\n",
        "GET " + root + std::string(7000, '%') + " HTTP/1.1\r\n" + host + "\r\n",
        head + "X: " + std::string(1000000, 'x') + "\r\n\r\n",
        head + ranges + "\r\n\r\n",
        head + "Range: bytes=" + std::string(8000, '1') + "-\r\n\r\n",
        head + "Range: bytes=99999999999999999999999-\r\n\r\n",
        head + "Content-Length: -1\r\n\r\n",
        head + "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\n",
        "POST " + root + " HTTP/1.1\r\n" + host +
            "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\n",
        "GET http://[::1/ HTTP/9.9\r\n" + host + "\r\n",
        "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
    };
    for (const std::string &request : requests) {
        HttpClient client(port);
        client.send(request);
        EXPECT_TRUE(client.waitEnd()) << request.substr(0, 60);
        EXPECT_LT(client.answer.size(), 100000u) << request.substr(0, 60);
    }
    std::string lines = head;
    for (int i = 0; i < 100000; ++i)
        lines += "A: b\r\n";
    HttpClient client(port);
    client.send(lines + "\r\n");
    EXPECT_TRUE(client.waitEnd());
    EXPECT_NE(statusOf(client.answer), 200);
    expectServes();
}

TEST_F(PanelwallPageServer, RangesAreNotServed) {
    const std::string whole = get(port, root + "main.js");
    const std::string part =
        get(port, root + "main.js", "127.0.0.1", "Range: bytes=0-9,0-9,0-9\r\n");
    EXPECT_EQ(statusOf(part), 200);
    EXPECT_EQ(part, whole);
}

TEST_F(PanelwallPageServer, EndsRequestsThatTakeTooLong) {
    const auto begin = std::chrono::steady_clock::now();
    HttpClient slow(port);
    slow.send("GET " + root + " HTTP/1.1\r\n");
    // Sending a line now and then does not help: the time limit is for the whole request.
    while (slow.send("X: y\r\n") && !slow.waitEnd(std::chrono::milliseconds(200)))
        ASSERT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    const auto passed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(passed, std::chrono::seconds(4));
    EXPECT_LT(passed, std::chrono::seconds(20));
}

TEST_F(PanelwallPageServer, ManyIdleConnectionsLeaveNoneForMoreAndThenAllAgain) {
    {
        const Clients idle = open(PageServer::maxConnections + 1);
        expectRefusals(idle, 1);
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (statusOf(get(port, root)) != 200)
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
}

TEST_F(PanelwallPageServer, AFloodOfConnectionsCostsNoMoreThanItsLimit) {
    const std::size_t before = openDescriptors();
    const Clients flood = open(PageServer::maxConnections + 270);
    expectRefusals(flood, 270);
    // Still open: this side's ends, and the connections that are served.
    EXPECT_LE(openDescriptors(), before + flood.size() + PageServer::maxConnections);
}

TEST_F(PanelwallPageServer, ServesSoManyReadersAndSaysSoToMore) {
    const Clients readers = open(PageServer::maxReaders);
    for (const auto &reader : readers)
        ASSERT_TRUE(reader->readEvents(root));
    EXPECT_EQ(statusOf(get(port, root + "events")), 503);
    expectServes();
}

TEST_F(PanelwallPageServer, DropsReadersThatDoNotRead) {
    HttpClient client(port);
    ASSERT_TRUE(client.readEvents(root));
    greet("hello");
    // Publishes more than the buffers between the two ends hold.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (feed.readers() > 0) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        feed.publish(std::string(1 << 20, 'x'));
        usleep(10000);
    }
    expectServes();
}

TEST_F(PanelwallPageServer, StopsAtOnceWhateverIsOpen) {
    HttpClient reader(port);
    ASSERT_TRUE(reader.readEvents(root));
    HttpClient halfway(port);
    halfway.send("GET / HT");
    const HttpClient idle(port);
    const auto begin = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    EXPECT_THROW(HttpClient{port}, std::runtime_error);
}
