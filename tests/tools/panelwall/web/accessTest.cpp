#include "tools/panelwall/web/access.h"

#include <gtest/gtest.h>
#include <set>

using namespace panelwall;

static const std::string token = "0123456789abcdef-_ABCD";
static const std::string root = "/" + token + "/";

static int statusOf(const std::string &path, const httplib::Headers &headers,
                    const std::string &method = "GET") {
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.headers = headers;
    return checkRequest(request, token).status;
}

TEST(PanelwallAccess, EveryTokenIsNewAndFitsAnAddress) {
    std::set<std::string> tokens;
    for (int i = 0; i < 1000; ++i) {
        const std::string made = makeToken();
        EXPECT_EQ(made.size(), 22u);
        EXPECT_EQ(made.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                         "0123456789-_"),
                  std::string::npos)
            << made;
        tokens.insert(made);
    }
    EXPECT_EQ(tokens.size(), 1000u);
}

TEST(PanelwallAccess, NothingIsToldWithoutTheToken) {
    const httplib::Headers headers = {{"Host", "127.0.0.1:8060"}};
    EXPECT_EQ(statusOf(root, headers), 0);
    EXPECT_EQ(statusOf(root + "events", headers), 0);
    for (const std::string &path :
         {std::string(), std::string("/"), std::string("/events"), "/" + token, token + "/",
          "//" + token + "/", "/" + token.substr(1) + "/", "/" + token + "x/",
          "/" + token.substr(0, 21) + "E/", "/1" + token.substr(1) + "/events",
          "/" + std::string(22, '\0') + "/"})
        EXPECT_EQ(statusOf(path, headers), 404) << path;
    // The refusal does not even reveal which methods and host names are accepted.
    EXPECT_EQ(statusOf("/", headers, "POST"), 404);
    EXPECT_EQ(statusOf("/", {{"Host", "wall.example"}}), 404);
}

TEST(PanelwallAccess, OnlyGetPasses) {
    for (const char *method : {"HEAD", "POST", "PUT", "DELETE", "OPTIONS", "get", ""})
        EXPECT_EQ(statusOf(root, {{"Host", "127.0.0.1:8060"}}, method), 405) << method;
}

TEST(PanelwallAccess, TheServerIsNamedByAnAddress) {
    for (const char *host : {"127.0.0.1:8060", "127.0.0.1", "localhost:8060", "localhost",
                             "[::1]:8060", "[::1]", "[FE80::1]", "192.0.2.7:80"})
        EXPECT_EQ(statusOf(root, {{"Host", host}}), 0) << host;
    for (const char *host : {"", "wall.example:8060", "127.0.0.1.example", "localhost.example:8060",
                             "127.0.0.1:", "127.0.0.1:80a", "127.0.0.1:123456", "::1", "[::1", "[]",
                             "[127.0.0.1]", "127.1", ":8060", "[::1]x", "127.0.0.1 :80",
                             "localhost@example.com", "1.2.3.4.5", "xlocalhost"})
        EXPECT_EQ(statusOf(root, {{"Host", host}}), 421) << host;
    EXPECT_EQ(statusOf(root, {}), 421);
    EXPECT_EQ(statusOf(root, {{"Host", "127.0.0.1"}, {"Host", "localhost"}}), 421);
    EXPECT_EQ(statusOf(root, {{"Host", std::string(8000, '1')}}), 421);
}

TEST(PanelwallAccess, OriginsOfOtherSitesAreRefused) {
    const auto statusFrom = [](const std::string &origin) {
        return statusOf(root + "events", {{"Host", "127.0.0.1:8060"}, {"Origin", origin}});
    };
    EXPECT_EQ(statusFrom("http://127.0.0.1:8060"), 0);
    for (const char *origin :
         {"http://example.com", "https://127.0.0.1:8060", "http://127.0.0.1:8061", "null"})
        EXPECT_EQ(statusFrom(origin), 403) << origin;
    EXPECT_EQ(statusFrom(std::string("\0http://example.com", 19)), 403);
}

TEST(PanelwallAccess, PartsOfThePageAreForThePage) {
    const auto statusFor = [](const std::string &path, const char *site, const char *mode,
                              const char *destination) {
        return statusOf(path, {{"Host", "localhost:8060"},
                               {"Sec-Fetch-Site", site},
                               {"Sec-Fetch-Mode", mode},
                               {"Sec-Fetch-Dest", destination}});
    };
    const std::string picture = root + "screen.png";
    EXPECT_EQ(statusFor(picture, "same-origin", "cors", "empty"), 0);
    EXPECT_EQ(statusFor(root, "none", "navigate", "document"), 0);
    EXPECT_EQ(statusFor(picture, "cross-site", "no-cors", "image"), 403);
    EXPECT_EQ(statusFor(picture, "same-site", "no-cors", "image"), 403);
    EXPECT_EQ(statusFor(picture, "cross-site", "navigate", "document"), 403);
    EXPECT_EQ(statusFor(root, "cross-site", "navigate", "document"), 0);
    EXPECT_EQ(statusFor(root, "cross-site", "navigate", "iframe"), 403);
}
