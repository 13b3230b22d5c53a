#include "tests/support/expectations.h"
#include "tools/wall/receiver.h"

#include <gtest/gtest.h>

using namespace panelwall;
using test::contains;

static std::vector<config::Problem> problemsOf(const std::vector<std::string> &ips,
                                               const std::vector<int> &versions = {}) {
    config::Document document;
    for (std::size_t i = 0; i < ips.size(); ++i)
        document.devices.push_back({ips[i], i < versions.size() ? versions[i] : 2, 0, 0.0, {}});
    std::vector<config::Problem> problems;
    const auto endpoints = findEndpoints(document, problems);
    EXPECT_EQ(endpoints.size() + problems.size(), ips.size());
    return problems;
}

TEST(PanelwallLoopbackAddress, TakesLoopbackAddresses) {
    EXPECT_TRUE(problemsOf({"127.0.0.1", "127.255.1.2", "::1"}).empty());
}

TEST(PanelwallLoopbackAddress, RefusesEverythingElse) {
    for (const char *ip : {"192.168.1.20", "128.0.0.1", "126.255.255.255", "0.0.0.0", "::", "::2",
                           "fe80::1", "::ffff:127.0.0.1"}) {
        const auto problems = problemsOf({"127.0.0.1", ip});
        ASSERT_EQ(problems.size(), 1u) << ip;
        EXPECT_EQ(problems[0].pointer, "/devices/1/ip");
        EXPECT_TRUE(contains(problems[0].message,
                             std::string("device 1 at \"") + ip + "\", UDP port 60222"));
        EXPECT_TRUE(contains(problems[0].message, "not a loopback address"));
    }
}

TEST(PanelwallLoopbackAddress, RefusesWhatDoesNotParse) {
    for (const char *ip : {"", "localhost", "127.1", "127.0.0.1 ", "127.0.0.1:60221", "::1%lo",
                           "127.0.0.256", "\x1b[2J"}) {
        const auto problems = problemsOf({ip});
        ASSERT_EQ(problems.size(), 1u) << ip;
        EXPECT_TRUE(contains(problems[0].message, "does not parse"));
        EXPECT_FALSE(contains(problems[0].message, "\x1b"));
    }
}

TEST(PanelwallLoopbackAddress, TwoDevicesCannotShareAddressAndPort) {
    const auto problems = problemsOf({"127.0.0.1", "127.0.0.2", "127.0.0.1"});
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].pointer, "/devices/2/ip");
    EXPECT_TRUE(contains(problems[0].message, "device 0 has the same address and port"));
    EXPECT_EQ(problemsOf({"::1", "0:0:0:0:0:0:0:1"}).size(), 1u);
}

TEST(PanelwallLoopbackAddress, OneAddressServesBothPorts) {
    EXPECT_TRUE(problemsOf({"127.0.0.1", "127.0.0.1"}, {1, 2}).empty());
    EXPECT_EQ(problemsOf({"127.0.0.1", "127.0.0.1"}, {0, 2}).size(), 1u);
}

TEST(PanelwallLoopbackAddress, AllProblemsAreFoundAtOnce) {
    EXPECT_EQ(problemsOf({"10.0.0.1", "nowhere", "127.0.0.1", "127.0.0.1"}).size(), 3u);
}
