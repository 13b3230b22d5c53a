// From the wall's thread to the readers of the live page: the newest state, and nothing older.
#pragma once

#include "tools/panelwall/pipe.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <unistd.h>

namespace panelwall {

// There is no queue: a reader that is slow misses states and gets the newest when it is ready, so
// that no reader can hold up the wall or make it grow.
class LiveFeed {
public:
    using Text = std::shared_ptr<const std::string>;

    // For the wall's thread.

    // Readable while a new reader waits for its greeting.
    int fd() const { return newcomers.readEnd(); }

    // Whether readers have come since the last call; they wait for greet().
    bool takeNewcomers() {
        char scrap[256];
        bool any = false;
        while (read(newcomers.readEnd(), scrap, sizeof scrap) > 0)
            any = true;
        return any;
    }

    // All that a newcomer must know, the present state included. Others do not see it.
    void greet(std::string text) { tell(greeting, std::move(text)); }

    // The state of now, for readers that were greeted.
    void publish(std::string text) { tell(state, std::move(text)); }

    // For any thread.

    int readers() const { return readerCount; }

    // No reader waits any more.
    void close() {
        const std::lock_guard lock(mutex);
        closed = true;
        changed.notify_all();
    }

    // For a connection's thread; lives while the connection does.
    class Reader {
    public:
        explicit Reader(LiveFeed &feed_) : feed(feed_) {
            ++feed.readerCount;
            const std::lock_guard lock(feed.mutex);
            seen = feed.greeting;
            // A full pipe wakes the wall just as well.
            [[maybe_unused]] const ssize_t written = write(feed.newcomers.writeEnd(), "", 1);
        }
        ~Reader() { --feed.readerCount; }
        Reader(const Reader &) = delete;
        Reader &operator=(const Reader &) = delete;

        // Waits for the greeting the first time, later for a state newer than the last. Null once
        // the feed is closed.
        Text next() {
            std::unique_lock lock(feed.mutex);
            const Text &text = greeted ? feed.state : feed.greeting;
            feed.changed.wait(lock, [&] { return feed.closed || text != seen; });
            greeted = true;
            seen = feed.state;
            return feed.closed ? nullptr : text;
        }

    private:
        LiveFeed &feed;
        bool greeted = false;
        Text seen; // the last greeting before it came, or once greeted state
    };

private:
    void tell(Text &kept, std::string text) {
        auto shared = std::make_shared<const std::string>(std::move(text));
        const std::lock_guard lock(mutex);
        kept = std::move(shared);
        changed.notify_all();
    }

    Pipe newcomers;
    std::atomic<int> readerCount{0};

    std::mutex mutex;
    std::condition_variable changed;
    bool closed = false;
    Text greeting;
    Text state;
};

} // namespace panelwall
