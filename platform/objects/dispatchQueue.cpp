#include "platform/objects/dispatchQueue.h"

#include "platform/objects/monotonicCondition.h"
#include "platform/objects/signals.h"

#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

// One thread of a queue. Shared by the thread itself and by the threads that wait for its end.
struct Worker {
    std::thread thread;
    int waiting = 0; // number of waiting threads; if it is 0 at the end, the thread detaches itself
};

struct PostedItem {
    platform::QueueItem item;
    bool isLast = false; // the last item of one user
};

} // namespace

struct dispatch_queue_s {
    explicit dispatch_queue_s(const char *label) : label(label == nullptr ? "" : label) {}

    const std::string label;
    std::mutex mutex;
    platform::MonotonicCondition changed;

    // Under the mutex.
    std::vector<PostedItem> pending;
    std::uint64_t posted = 0;
    std::uint64_t finished = 0;
    int users = 0;
    std::shared_ptr<Worker> worker; // present exactly while there are users
};

namespace platform {

namespace {

void work(dispatch_queue_t queue, const std::shared_ptr<Worker> &self) {
    std::unique_lock lock(queue->mutex);
    while (queue->users > 0) {
        if (queue->pending.empty()) {
            queue->changed.wait(lock);
            continue;
        }
        PostedItem next = std::move(queue->pending.front());
        queue->pending.erase(queue->pending.begin());
        lock.unlock();
        next.item.call(next.item.context.get());
        next.item.context.reset();
        lock.lock();
        ++queue->finished;
        if (next.isLast)
            --queue->users;
        queue->changed.notifyAll();
    }
    queue->pending = {};
    queue->worker.reset();
    if (self->waiting == 0)
        self->thread.detach();
}

std::uint64_t post(dispatch_queue_t queue, QueueItem item, bool isLast) {
    queue->pending.push_back({std::move(item), isLast});
    queue->changed.notifyAll();
    return ++queue->posted;
}

bool isOn(const Worker &worker) {
    return worker.thread.get_id() == std::this_thread::get_id();
}

} // namespace

void enterQueue(dispatch_queue_t queue) {
    const std::lock_guard lock(queue->mutex);
    if (!queue->worker) {
        auto worker = std::make_shared<Worker>();
        // The thread first waits for the mutex, so it finds `thread` and `worker` set.
        worker->thread = startThread([queue, worker] { work(queue, worker); });
        queue->worker = std::move(worker);
    }
    ++queue->users;
}

void postToQueue(dispatch_queue_t queue, QueueItem item) {
    const std::lock_guard lock(queue->mutex);
    post(queue, std::move(item), false);
}

bool leaveQueue(dispatch_queue_t queue, QueueItem last, Clock::time_point deadline) {
    std::unique_lock lock(queue->mutex);
    const std::shared_ptr<Worker> worker = queue->worker;
    const std::uint64_t ticket = post(queue, std::move(last), true);
    if (isOn(*worker))
        return false;

    ++worker->waiting;
    const bool ended = queue->changed.waitUntil(
        lock, deadline, [queue, ticket] { return queue->finished >= ticket; });
    --worker->waiting;
    // Another user that left at the same time may already be joining it.
    const bool join = ended && queue->worker != worker && worker->thread.joinable();
    if (!join)
        return ended;
    std::thread thread = std::move(worker->thread);
    lock.unlock();
    thread.join();
    return true;
}

bool isOnQueue(dispatch_queue_t queue) {
    const std::lock_guard lock(queue->mutex);
    return queue->worker && isOn(*queue->worker);
}

} // namespace platform

// Attributes would request other kinds of queues; only serial ones are supported.
dispatch_queue_t dispatch_queue_create(const char *label, dispatch_queue_attr_t attr) {
    if (attr != nullptr)
        return nullptr;
    try {
        return new dispatch_queue_s(label);
    } catch (...) {
        return nullptr;
    }
}
