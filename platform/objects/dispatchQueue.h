// Serial queues whose thread lives only while somebody uses them.
//
// A queue is never released, and the library may be unloaded right after its last use. So a queue
// is nothing but a little memory until a user enters it, and its thread has ended before the last
// user has left.
#pragma once

#include "platform/objects/clock.h"

#include <dispatch/dispatch.h>
#include <memory>

namespace platform {

// What runs on a queue: `call` with `context`, which is let go of before the next one runs.
struct QueueItem {
    void (*call)(void *context) = nullptr;
    std::shared_ptr<void> context;
};

// Any thread. From here until the item given to leaveQueue() has run, the queue has a thread.
// Throws std::system_error when it cannot be started.
void enterQueue(dispatch_queue_t queue);

// Any thread, between enterQueue() and leaveQueue(). Items run one after another, in this order.
void postToQueue(dispatch_queue_t queue, QueueItem item);

// Posts a user's last item and waits for its end and, when this was the last user, for the end of
// the queue's thread. False when the item had not ended by the deadline, and when this is the
// queue's own thread, where nothing is waited for: the item then runs when its turn comes.
bool leaveQueue(dispatch_queue_t queue, QueueItem last, Clock::time_point deadline);

// Whether the caller runs on the queue.
bool isOnQueue(dispatch_queue_t queue);

} // namespace platform
