// From the wall's thread to the readers of the live page: the newest state, and nothing older.
#pragma once

#include "tools/panelwall/pipe.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace panelwall {

// There is no queue: a reader that is slow misses states and gets the newest when it is ready, so
// that no reader can hold up the wall or make it grow.
class LiveFeed {
public:
    using Text = std::shared_ptr<const std::string>;

    // Throws std::system_error when no pipe can be made.
    LiveFeed() = default;
    LiveFeed(const LiveFeed &) = delete;
    LiveFeed &operator=(const LiveFeed &) = delete;

    // For the wall's thread.

    // Readable while a new reader waits for its greeting.
    int fd() const { return newcomers.readEnd(); }

    // Whether readers have come since the last call; they wait for greet().
    bool takeNewcomers();

    bool hasReaders() const { return readerCount > 0; }

    // All that a newcomer must know, the present state included. Others do not see it.
    void greet(std::string text);

    // The state of now, for readers that were greeted.
    void publish(std::string text);

    // For any thread: no reader waits any more.
    void close();

    // For a connection's thread; lives while the connection does.
    class Reader {
    public:
        explicit Reader(LiveFeed &feed);
        ~Reader();
        Reader(const Reader &) = delete;
        Reader &operator=(const Reader &) = delete;

        // Waits for the greeting the first time, later for a state newer than the last. Null once
        // the feed is closed.
        Text next();

    private:
        LiveFeed &feed;
        bool greeted = false;
        std::uint64_t seen = 0; // number of greetings, or once greeted of states
    };

private:
    Pipe newcomers;
    std::atomic<int> readerCount{0};

    std::mutex mutex;
    std::condition_variable changed;
    bool closed = false;
    Text greeting;
    std::uint64_t greetings = 0;
    Text state;
    std::uint64_t states = 0;
};

} // namespace panelwall
