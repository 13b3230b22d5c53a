#include "platform/objects/dispatchQueue.h"
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

platform::QueueItem itemOf(std::function<void()> function) {
    return {[](void *context) { (*static_cast<std::function<void()> *>(context))(); },
            std::make_shared<std::function<void()>>(std::move(function))};
}

platform::Clock::time_point in(platform::Clock::duration time) {
    return platform::Clock::now() + time;
}

} // namespace

TEST(DispatchQueue, HasAThreadOnlyWhileItIsUsed) {
    const std::size_t threads = test::threads();
    dispatch_queue_t queue = sharedQueue();
    EXPECT_TRUE(test::threadsBecome(threads));
    platform::enterQueue(queue);
    platform::enterQueue(queue);
    EXPECT_TRUE(test::threadsBecome(threads + 1));
    EXPECT_TRUE(platform::leaveQueue(queue, itemOf([] {}), in(20s)));
    EXPECT_TRUE(test::threadsBecome(threads + 1));
    EXPECT_TRUE(platform::leaveQueue(queue, itemOf([] {}), in(20s)));
    EXPECT_TRUE(test::threadsBecome(threads));
}

TEST(DispatchQueue, RunsItemsInOrderOneAtATime) {
    dispatch_queue_t queue = sharedQueue();
    std::vector<int> order;
    platform::enterQueue(queue);
    for (int i = 0; i < 1000; ++i)
        platform::postToQueue(queue, itemOf([&order, i] { order.push_back(i); }));
    EXPECT_TRUE(platform::leaveQueue(queue, itemOf([&order] { order.push_back(1000); }), in(20s)));
    ASSERT_EQ(order.size(), 1001u);
    for (int i = 0; i <= 1000; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(DispatchQueue, KnowsItsOwnThread) {
    dispatch_queue_t queue = sharedQueue();
    EXPECT_FALSE(platform::isOnQueue(queue));
    bool onQueue = false;
    platform::enterQueue(queue);
    EXPECT_FALSE(platform::isOnQueue(queue));
    platform::leaveQueue(queue, itemOf([&] { onQueue = platform::isOnQueue(queue); }), in(20s));
    EXPECT_TRUE(onQueue);
}

TEST(DispatchQueue, LettingGoOfAnItemComesBeforeTheEndOfLeaving) {
    auto context = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = context;
    platform::enterQueue(sharedQueue());
    platform::enterQueue(sharedQueue());
    EXPECT_TRUE(platform::leaveQueue(sharedQueue(), {[](void *) {}, std::move(context)}, in(20s)));
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(platform::leaveQueue(sharedQueue(), itemOf([] {}), in(20s)));
}

TEST(DispatchQueue, LeavingGivesUpAtTheDeadlineAndTheThreadStillEnds) {
    const std::size_t threads = test::threads();
    std::atomic<bool> goOn = false;
    std::atomic<bool> lastRan = false;
    platform::enterQueue(sharedQueue());
    platform::postToQueue(sharedQueue(), itemOf([&] { goOn.wait(false); }));
    EXPECT_FALSE(platform::leaveQueue(sharedQueue(), itemOf([&] { lastRan = true; }), in(50ms)));
    // A new user waits behind the old one.
    platform::enterQueue(sharedQueue());
    EXPECT_TRUE(test::threadsBecome(threads + 1));
    goOn = true;
    goOn.notify_all();
    EXPECT_TRUE(
        platform::leaveQueue(sharedQueue(), itemOf([&] { EXPECT_TRUE(lastRan); }), in(20s)));
    EXPECT_TRUE(test::threadsBecome(threads));
}

TEST(DispatchQueue, ManyUsersComeAndGo) {
    const std::size_t threads = test::threads();
    std::atomic<int> ran = 0;
    std::vector<std::thread> users;
    for (int i = 0; i < 4; ++i)
        users.emplace_back([&ran] {
            for (int round = 0; round < 200; ++round) {
                platform::enterQueue(sharedQueue());
                EXPECT_TRUE(
                    platform::leaveQueue(sharedQueue(), itemOf([&ran] { ++ran; }), in(20s)));
            }
        });
    for (std::thread &user : users)
        user.join();
    EXPECT_EQ(ran, 800);
    EXPECT_TRUE(test::threadsBecome(threads));
}
