// The live page of one session, as the wall's thread uses it.
#pragma once

#include "tools/panelwall/web/liveFeed.h"
#include "tools/panelwall/web/pageServer.h"
#include "tools/panelwall/web/screenPicture.h"
#include "tools/panelwall/web/wallEvents.h"

#include <cstdint>
#include <string>
#include <vector>

namespace panelwall {

// Used by the thread that uses the wall.
class LivePage {
public:
    // `display` is the mirrored one; `sockets_` are the devices', in order, which stay open as long
    // as the page exists, or none.
    LivePage(std::uint32_t display, std::vector<int> sockets_, WallFacts facts_);

    // Starts serving. Returns the reason for a failure, else an empty string.
    std::string open(const std::string &address, int port) { return server.open(address, port); }
    std::string url() const { return server.url(); }

    // Writes a file that redirects to the page. Returns the reason for a failure, else an empty
    // string.
    std::string writeLink(const std::string &path) const;

    // To poll: readable when show() has something to do before due().
    int fd() const { return feed.fd(); }

    // When show() is to be called next; sooner after noteChange(), which reports that the wall has
    // received something.
    Clock::time_point due() const;
    void noteChange() { changed = true; }

    // Greets new readers, and sends the others the state if that is due: at most thirty times a
    // second, less often when a state is large, and once a second while nothing changes.
    void show(const Wall &wall, Clock::time_point now);

private:
    std::string state(const Wall &wall, Clock::time_point now) const;

    const std::vector<int> sockets;
    const WallFacts facts;
    LiveFeed feed;
    ScreenPicture picture;
    PageServer server; // last, so destroyed first: its threads use the others
    bool changed = false;
    Clock::time_point lastShown;
    std::size_t lastSize = 0; // bytes
};

} // namespace panelwall
