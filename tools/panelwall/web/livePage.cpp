#include "tools/panelwall/web/livePage.h"

#include "tools/wall/receiver.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace panelwall {

static constexpr std::chrono::milliseconds shortestPace{33};
static constexpr std::chrono::seconds idlePace{1};
static constexpr double bytesPerSecond = 4e6;

LivePage::LivePage(std::uint32_t display, std::vector<int> sockets_, WallFacts facts_)
    : sockets(std::move(sockets_)), facts(std::move(facts_)), picture(display),
      server(feed, picture) {}

// Always creates a new file: other users may be able to read an existing one.
std::string LivePage::writeLink(const std::string &path) const {
    const std::string text =
        "<!doctype html><meta http-equiv=\"refresh\" content=\"0; url=" + url() + "\">\n";
    unlink(path.c_str());
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    const bool written =
        fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    const std::string reason = written ? "" : std::generic_category().message(errno);
    if (fd >= 0)
        close(fd);
    return reason;
}

Clock::time_point LivePage::due() const {
    if (feed.readers() == 0)
        return Clock::time_point::max();
    if (!changed)
        return lastShown + idlePace;
    const std::chrono::duration<double> bySize(static_cast<double>(lastSize) / bytesPerSecond);
    return lastShown +
           std::clamp<Clock::duration>(std::chrono::duration_cast<Clock::duration>(bySize),
                                       shortestPace, idlePace);
}

std::string LivePage::state(const Wall &wall, Clock::time_point now) const {
    std::vector<std::optional<std::uint64_t>> lost;
    for (const int socket : sockets)
        lost.push_back(droppedDatagrams(socket));
    return nowEvent(wall, facts, lost, now);
}

void LivePage::show(const Wall &wall, Clock::time_point now) {
    if (feed.takeNewcomers())
        feed.greet(wallEvent(wall, facts) + pastEvent(wall) + state(wall, now));
    if (now < due())
        return;
    std::string text = state(wall, now);
    lastSize = text.size();
    feed.publish(std::move(text));
    lastShown = now;
    changed = false;
}

} // namespace panelwall
