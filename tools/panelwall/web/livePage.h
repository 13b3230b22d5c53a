// The live page of one session: what the wall's thread does for it.
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
    // `display` is the mirrored one; `sockets` are the devices', in order, open as long as the
    // page, or none.
    LivePage(std::uint32_t display, std::vector<int> sockets_, WallFacts facts_);

    // Begins to serve. What is wrong, in words, or nothing.
    std::string open(const std::string &address, int port) { return server.open(address, port); }
    std::string url() const { return server.url(); }

    // Makes a file that leads to the page. What is wrong, in words, or nothing.
    std::string writeLink(const std::string &path) const;

    // To poll for: readable when show() has something to do before due().
    int fd() const { return feed.fd(); }

    // When show() is to be called next; `changed` tells that the wall has received something since.
    Clock::time_point due() const;
    void noteChange() { changed = true; }

    // Greets new readers, and tells the others if it is time: at most thirty times a second, once a
    // second while nothing changes, and less often when a state is large.
    void show(const Wall &wall, Clock::time_point now);

private:
    std::string state(const Wall &wall, Clock::time_point now) const;

    const std::vector<int> sockets;
    const WallFacts facts;
    LiveFeed feed;
    ScreenPicture picture;
    PageServer server; // last: its threads use the others
    bool changed = false;
    Clock::time_point lastShown;
    std::size_t lastSize = 0; // bytes
};

} // namespace panelwall
