// The live page's HTTP server.
#pragma once

#include "tools/panelwall/web/liveFeed.h"
#include "tools/panelwall/web/screenPicture.h"

#include <atomic>
#include <httplib.h>
#include <string>
#include <thread>

namespace panelwall {

// Serves the page's files, the feed as server-sent events ("events") and the screen's picture
// ("screen.png"), all below a path with a random token, to requests that access.h accepts.
//
// The library's threads accept and answer connections with all signals blocked. Connections beyond
// the limits get an error reply and are closed. Whatever clients send or fail to read, they never
// block the thread that owns the server.
class PageServer : private httplib::Server {
public:
    static constexpr int maxConnections = 32;
    static constexpr int maxReaders = 12; // of the feed

    // Both must outlive the server. Throws std::system_error when the system provides no pipe
    // or no random numbers.
    PageServer(LiveFeed &feed_, ScreenPicture &picture_);
    ~PageServer() override; // closes the feed and every connection

    // Starts listening at an address (IPv4 or IPv6, as text) and port (0: any free one). Returns
    // the reason for a failure, else an empty string. Called once.
    std::string open(const std::string &address, int port);

    // The page's URL, including the token; ends with a slash.
    std::string url() const { return "http://" + name + "/" + token + "/"; }

    // Answers one connection on the calling thread, and closes it. Called by the library's threads.
    bool process_and_close_socket(socket_t descriptor) override;

private:
    void answer(const httplib::Request &request, httplib::Response &response);
    void answerEvents(httplib::Response &response);
    void answerPicture(httplib::Response &response);

    LiveFeed &feed;
    ScreenPicture &picture;
    const std::string token;
    std::string name;        // "127.0.0.1:8060" or "[::1]:8060"
    socket_t listening = -1; // owned by the library
    lights::WakeUp stopping;
    std::atomic<int> connections{0};
    std::thread listener;
};

} // namespace panelwall
