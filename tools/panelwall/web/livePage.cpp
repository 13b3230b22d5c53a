#include "tools/panelwall/web/livePage.h"

#include "tools/panelwall/web/socketTable.h"

#include <algorithm>

namespace panelwall {

static constexpr std::chrono::milliseconds shortestPace{33};
static constexpr std::chrono::seconds idlePace{1};
static constexpr double bytesPerSecond = 4e6;

LivePage::LivePage(std::uint32_t display, std::vector<int> theSockets)
    : sockets(std::move(theSockets)), picture(display), server(feed, picture) {}

Clock::duration LivePage::pace() const {
    if (!changed)
        return idlePace;
    const std::chrono::duration<double> bySize(static_cast<double>(lastSize) / bytesPerSecond);
    return std::clamp<Clock::duration>(std::chrono::duration_cast<Clock::duration>(bySize),
                                       shortestPace, idlePace);
}

Clock::time_point LivePage::due() const {
    return feed.hasReaders() ? lastShown + pace() : Clock::time_point::max();
}

void LivePage::countLost(Clock::time_point now) {
    if (lostCounted && now - *lostCounted < idlePace)
        return;
    lost = droppedDatagrams(sockets);
    lostCounted = now;
}

void LivePage::show(const Wall &wall, Clock::time_point now) {
    if (feed.takeNewcomers()) {
        countLost(now);
        feed.greet(wallEvent(wall, facts) + pastEvent(wall) + nowEvent(wall, facts, lost, now));
    }
    if (now < due())
        return;
    countLost(now);
    std::string state = nowEvent(wall, facts, lost, now);
    lastSize = state.size();
    feed.publish(std::move(state));
    lastShown = now;
    changed = false;
}

} // namespace panelwall
