#include "tools/panelwall/web/access.h"

#include <gtest/gtest.h>

using namespace panelwall;

static int statusOf(const RequestFacts &facts) {
    return judge(facts).status;
}

TEST(PanelwallAccess, AddressesAreNamesThatNobodyElseCanPointHere) {
    for (const char *host : {"127.0.0.1:8060", "127.0.0.1", "localhost:8060", "localhost",
                             "[::1]:8060", "[::1]", "192.0.2.7:80"})
        EXPECT_TRUE(namesAnAddress(host)) << host;
    for (const char *host :
         {"", "wall.example:8060", "127.0.0.1.example", "localhost.example:8060",
          "127.0.0.1:", "127.0.0.1:80a", "127.0.0.1:123456", "::1", "[::1", "[]", "[127.0.0.1]",
          "127.1", ":8060", "[::1]x", "127.0.0.1 :80", "localhost@example.com"})
        EXPECT_FALSE(namesAnAddress(host)) << host;
}

TEST(PanelwallAccess, OnlyGetPasses) {
    EXPECT_EQ(statusOf({"GET", "/", "127.0.0.1:8060", "", "", "", ""}), 0);
    for (const char *method : {"HEAD", "POST", "PUT", "DELETE", "OPTIONS", "get", ""})
        EXPECT_EQ(statusOf({method, "/", "127.0.0.1:8060", "", "", "", ""}), 405) << method;
}

TEST(PanelwallAccess, NamesAreRefused) {
    EXPECT_EQ(statusOf({"GET", "/", "wall.example:8060", "", "", "", ""}), 421);
    EXPECT_EQ(statusOf({"GET", "/", "", "", "", "", ""}), 421);
}

TEST(PanelwallAccess, OriginsOfOtherSitesAreRefused) {
    const std::string host = "127.0.0.1:8060";
    EXPECT_EQ(statusOf({"GET", "/events", host, "http://127.0.0.1:8060", "", "", ""}), 0);
    for (const char *origin :
         {"http://example.com", "https://127.0.0.1:8060", "http://127.0.0.1:8061", "null"})
        EXPECT_EQ(statusOf({"GET", "/events", host, origin, "", "", ""}), 403) << origin;
}

TEST(PanelwallAccess, PartsOfThePageAreForThePage) {
    const std::string host = "localhost:8060";
    EXPECT_EQ(statusOf({"GET", "/screen.png", host, "", "same-origin", "cors", "empty"}), 0);
    EXPECT_EQ(statusOf({"GET", "/", host, "", "none", "navigate", "document"}), 0);
    EXPECT_EQ(statusOf({"GET", "/screen.png", host, "", "cross-site", "no-cors", "image"}), 403);
    EXPECT_EQ(statusOf({"GET", "/screen.png", host, "", "same-site", "no-cors", "image"}), 403);
    EXPECT_EQ(statusOf({"GET", "/screen.png", host, "", "cross-site", "navigate", "document"}),
              403);
    EXPECT_EQ(statusOf({"GET", "/", host, "", "cross-site", "navigate", "document"}), 0);
    EXPECT_EQ(statusOf({"GET", "/", host, "", "cross-site", "navigate", "iframe"}), 403);
}
