#include "tools/panelwall/web/liveFeed.h"

#include <future>
#include <gtest/gtest.h>
#include <poll.h>

using namespace panelwall;

static bool isReadable(int fd) {
    pollfd waiting{fd, POLLIN, 0};
    return poll(&waiting, 1, 0) == 1;
}

TEST(PanelwallLiveFeed, ANewcomerIsGreetedFirst) {
    LiveFeed feed;
    EXPECT_EQ(feed.readers(), 0);
    EXPECT_FALSE(isReadable(feed.fd()));
    feed.publish("old");
    {
        LiveFeed::Reader reader(feed);
        EXPECT_EQ(feed.readers(), 1);
        EXPECT_TRUE(isReadable(feed.fd()));
        EXPECT_TRUE(feed.takeNewcomers());
        EXPECT_FALSE(feed.takeNewcomers());
        feed.publish("before the greeting");
        feed.greet("hello");
        EXPECT_EQ(*reader.next(), "hello");
        feed.publish("later");
        EXPECT_EQ(*reader.next(), "later");
    }
    EXPECT_EQ(feed.readers(), 0);
}

TEST(PanelwallLiveFeed, ASlowReaderGetsTheNewest) {
    LiveFeed feed;
    LiveFeed::Reader reader(feed);
    feed.greet("hello");
    ASSERT_EQ(*reader.next(), "hello");
    for (int i = 0; i < 100; ++i)
        feed.publish(std::to_string(i));
    EXPECT_EQ(*reader.next(), "99");
    auto next = std::async(std::launch::async, [&] { return reader.next(); });
    feed.publish("100");
    EXPECT_EQ(*next.get(), "100");
}

TEST(PanelwallLiveFeed, OthersAreNotGreetedAgain) {
    LiveFeed feed;
    LiveFeed::Reader first(feed);
    feed.greet("one");
    ASSERT_EQ(*first.next(), "one");
    LiveFeed::Reader second(feed);
    feed.greet("two");
    feed.publish("state");
    EXPECT_EQ(*first.next(), "state");
    EXPECT_EQ(*second.next(), "two");
}

TEST(PanelwallLiveFeed, ClosingEndsEveryWait) {
    LiveFeed feed;
    LiveFeed::Reader reader(feed);
    auto next = std::async(std::launch::async, [&] { return reader.next(); });
    feed.close();
    EXPECT_EQ(next.get(), nullptr);
    EXPECT_EQ(LiveFeed::Reader(feed).next(), nullptr);
}
