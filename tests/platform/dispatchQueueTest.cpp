#include "platform/x11/dispatchQueue.h"
#include "tests/platform/processUsage.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

dispatch_queue_t sharedQueue() {
    static dispatch_queue_t queue = dispatch_queue_create("queue", nullptr);
    return queue;
}

x11::QueueItem itemOf(std::function<void()> function) {
    return {[](void *context) { (*static_cast<std::function<void()> *>(context))(); },
            std::make_shared<std::function<void()>>(std::move(function))};
}

x11::Clock::time_point in(x11::Clock::duration time) {
    return x11::Clock::now() + time;
}

} // namespace

TEST(DispatchQueue, HasAThreadOnlyWhileItIsUsed) {
    const std::size_t threads = test::threads();
    dispatch_queue_t queue = sharedQueue();
    EXPECT_TRUE(test::threadsBecome(threads));
    x11::enterQueue(queue);
    x11::enterQueue(queue);
    EXPECT_TRUE(test::threadsBecome(threads + 1));
    EXPECT_TRUE(x11::leaveQueue(queue, itemOf([] {}), in(20s)));
    EXPECT_TRUE(test::threadsBecome(threads + 1));
    EXPECT_TRUE(x11::leaveQueue(queue, itemOf([] {}), in(20s)));
    EXPECT_TRUE(test::threadsBecome(threads));
}

TEST(DispatchQueue, RunsItemsInOrderOneAtATime) {
    dispatch_queue_t queue = sharedQueue();
    std::vector<int> order;
    x11::enterQueue(queue);
    for (int i = 0; i < 1000; ++i)
        x11::postToQueue(queue, itemOf([&order, i] { order.push_back(i); }));
    EXPECT_TRUE(x11::leaveQueue(queue, itemOf([&order] { order.push_back(1000); }), in(20s)));
    ASSERT_EQ(order.size(), 1001u);
    for (int i = 0; i <= 1000; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(DispatchQueue, KnowsItsOwnThread) {
    dispatch_queue_t queue = sharedQueue();
    EXPECT_FALSE(x11::isOnQueue(queue));
    bool onQueue = false;
    x11::enterQueue(queue);
    EXPECT_FALSE(x11::isOnQueue(queue));
    x11::leaveQueue(queue, itemOf([&] { onQueue = x11::isOnQueue(queue); }), in(20s));
    EXPECT_TRUE(onQueue);
}

TEST(DispatchQueue, LettingGoOfAnItemComesBeforeTheEndOfLeaving) {
    auto context = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = context;
    x11::enterQueue(sharedQueue());
    x11::enterQueue(sharedQueue());
    EXPECT_TRUE(x11::leaveQueue(sharedQueue(), {[](void *) {}, std::move(context)}, in(20s)));
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(x11::leaveQueue(sharedQueue(), itemOf([] {}), in(20s)));
}

TEST(DispatchQueue, LeavingGivesUpAtTheDeadlineAndTheThreadStillEnds) {
    const std::size_t threads = test::threads();
    std::atomic<bool> goOn = false;
    std::atomic<bool> lastRan = false;
    x11::enterQueue(sharedQueue());
    x11::postToQueue(sharedQueue(), itemOf([&] { goOn.wait(false); }));
    EXPECT_FALSE(x11::leaveQueue(sharedQueue(), itemOf([&] { lastRan = true; }), in(50ms)));
    // A new user waits behind the old one.
    x11::enterQueue(sharedQueue());
    EXPECT_TRUE(test::threadsBecome(threads + 1));
    goOn = true;
    goOn.notify_all();
    EXPECT_TRUE(x11::leaveQueue(sharedQueue(), itemOf([&] { EXPECT_TRUE(lastRan); }), in(20s)));
    EXPECT_TRUE(test::threadsBecome(threads));
}

TEST(DispatchQueue, ManyUsersComeAndGo) {
    const std::size_t threads = test::threads();
    std::atomic<int> ran = 0;
    std::vector<std::thread> users;
    for (int i = 0; i < 4; ++i)
        users.emplace_back([&ran] {
            for (int round = 0; round < 200; ++round) {
                x11::enterQueue(sharedQueue());
                EXPECT_TRUE(x11::leaveQueue(sharedQueue(), itemOf([&ran] { ++ran; }), in(20s)));
            }
        });
    for (std::thread &user : users)
        user.join();
    EXPECT_EQ(ran, 800);
    EXPECT_TRUE(test::threadsBecome(threads));
}
