// Passes the newest state, and nothing older, from the wall's thread to the live page's readers.
#pragma once

#include "tools/lights/wakeUp.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace panelwall {

// There is no queue: a slow reader misses states and gets the newest when it is ready, so that no
// reader can block the wall or increase its memory use.
class LiveFeed {
public:
    using Text = std::shared_ptr<const std::string>;

    // For the wall's thread.

    // Readable while a new reader waits for its greeting.
    int fd() const { return newcomers.descriptor(); }

    // Whether new readers have connected since the last call; they wait for greet().
    bool takeNewcomers() { return newcomers.clear(); }

    // Sends new readers everything they need, including the current state. Others do not get it.
    void greet(std::string text) { tell(greeting, std::move(text)); }

    // Sends the current state to the readers that have been greeted.
    void publish(std::string text) { tell(state, std::move(text)); }

    // For any thread.

    int readers() const { return readerCount; }

    // Ends all waiting: next() returns null from now on.
    void close() {
        const std::lock_guard lock(mutex);
        closed = true;
        changed.notify_all();
    }

    // Used by a connection's thread, for as long as the connection lasts.
    class Reader {
    public:
        explicit Reader(LiveFeed &feed_) : feed(feed_) {
            ++feed.readerCount;
            const std::lock_guard lock(feed.mutex);
            seen = feed.greeting;
            feed.newcomers.signal(); // if its pipe is full, it wakes the wall anyway
        }
        ~Reader() { --feed.readerCount; }
        Reader(const Reader &) = delete;
        Reader &operator=(const Reader &) = delete;

        // The first call waits for a greeting, later calls wait for a state newer than the last.
        // Null once the feed is closed.
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
        Text seen; // next() waits for another text: first another greeting, then another state
    };

private:
    void tell(Text &kept, std::string text) {
        auto shared = std::make_shared<const std::string>(std::move(text));
        const std::lock_guard lock(mutex);
        kept = std::move(shared);
        changed.notify_all();
    }

    lights::WakeUp newcomers;
    std::atomic<int> readerCount{0};

    std::mutex mutex;
    std::condition_variable changed;
    bool closed = false;
    Text greeting;
    Text state;
};

} // namespace panelwall
