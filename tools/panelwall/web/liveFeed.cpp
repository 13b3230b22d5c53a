#include "tools/panelwall/web/liveFeed.h"

#include <unistd.h>

namespace panelwall {

bool LiveFeed::takeNewcomers() {
    char scrap[256];
    bool any = false;
    while (read(newcomers.readEnd(), scrap, sizeof scrap) > 0)
        any = true;
    return any;
}

void LiveFeed::greet(std::string text) {
    const auto shared = std::make_shared<const std::string>(std::move(text));
    const std::lock_guard lock(mutex);
    greeting = shared;
    ++greetings;
    changed.notify_all();
}

void LiveFeed::publish(std::string text) {
    const auto shared = std::make_shared<const std::string>(std::move(text));
    const std::lock_guard lock(mutex);
    state = shared;
    ++states;
    changed.notify_all();
}

void LiveFeed::close() {
    const std::lock_guard lock(mutex);
    closed = true;
    changed.notify_all();
}

LiveFeed::Reader::Reader(LiveFeed &theFeed) : feed(theFeed) {
    {
        const std::lock_guard lock(feed.mutex);
        seen = feed.greetings;
    }
    ++feed.readerCount;
    // A full pipe wakes the wall just as well.
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(feed.newcomers.writeEnd(), &byte, 1);
}

LiveFeed::Reader::~Reader() {
    --feed.readerCount;
}

LiveFeed::Text LiveFeed::Reader::next() {
    std::unique_lock lock(feed.mutex);
    feed.changed.wait(
        lock, [this] { return feed.closed || (greeted ? feed.states : feed.greetings) != seen; });
    if (feed.closed)
        return nullptr;
    seen = feed.states;
    if (greeted)
        return feed.state;
    greeted = true;
    return feed.greeting;
}

} // namespace panelwall
