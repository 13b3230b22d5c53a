// The live page's HTTP server.
#pragma once

#include "tools/panelwall/web/liveFeed.h"
#include "tools/panelwall/web/screenPicture.h"

#include <memory>
#include <string>

namespace panelwall {

// Serves the page's files, the feed as server-sent events (/events) and the screen's picture
// (/screen.png), to GET requests that access.h lets pass. The picture only goes to this machine,
// and only to the user whose wall it is, as the screen itself would.
//
// One thread accepts, each connection has a thread of its own, all of them with every signal
// blocked. Connections beyond the limits are told so and closed. Whatever clients send or fail to
// take, the thread that owns the server is never held up.
class PageServer {
public:
    static constexpr std::size_t mostConnections = 32;
    static constexpr int mostReaders = 12; // of the feed

    // Both must outlive the server.
    PageServer(LiveFeed &feed, ScreenPicture &picture);
    ~PageServer(); // closes the feed and every connection
    PageServer(const PageServer &) = delete;
    PageServer &operator=(const PageServer &) = delete;

    // Begins to listen at an address (IPv4 or IPv6, as text) and port (0: any free one). Returns
    // what is wrong, in words, or nothing when it listens. Called once.
    std::string open(const std::string &address, int port);

    // Answers one connection on the calling thread, and closes it. What the connections' own
    // threads do.
    void serve(int descriptor);

    // What to type into a browser.
    std::string url() const;

private:
    class Http;
    std::unique_ptr<Http> http;
};

} // namespace panelwall
