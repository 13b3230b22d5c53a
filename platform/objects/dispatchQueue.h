// Serial queues that have a thread only while they are in use.
//
// A queue is never released, and the library may be unloaded right after its last use. So a queue
// is only a little memory until a user enters it, and its thread ends before leaveQueue() returns
// to the last user.
#pragma once

#include "platform/objects/clock.h"

#include <dispatch/dispatch.h>
#include <memory>

namespace platform {

// An item runs as `call(context)`; its context is released before the next item runs.
struct QueueItem {
    void (*call)(void *context) = nullptr;
    std::shared_ptr<void> context;
};

// Any thread. From here until the item given to leaveQueue() has run, the queue has a thread.
// Throws std::system_error when it cannot be started.
void enterQueue(dispatch_queue_t queue);

// Any thread, between enterQueue() and leaveQueue(). Items run one after another, in posting order.
void postToQueue(dispatch_queue_t queue, QueueItem item);

// Posts a user's last item and waits for its end and, when this was the last user, for the end of
// the queue's thread. False when the item has not ended by the deadline. On the queue's own thread
// it returns false without waiting; the item then runs in its turn.
bool leaveQueue(dispatch_queue_t queue, QueueItem last, Clock::time_point deadline);

// Whether the caller runs on the queue.
bool isOnQueue(dispatch_queue_t queue);

} // namespace platform
