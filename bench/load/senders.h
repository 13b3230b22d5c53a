// The sending processes: a host of the library, and a bare sender for comparison.
#pragma once

#include "bench/load/plan.h"
#include "bench/load/sharedSendState.h"

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>

namespace load {

// A child process that inherits only the standard streams. The destructor kills it if needed.
class Sender {
public:
    // `work` returns the exit status. Must be created before this process starts another thread.
    Sender(SharedSendState &state, const Plan &plan, const std::function<int()> &work);
    ~Sender();
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;

    pid_t pid() const { return child; }

    // Its standard output so far.
    std::string output() const;

    // Asks it to end.
    void stop();

    bool hasEnded();

    // Whether it exited by itself with status 0. Valid once it has ended.
    bool succeeded() const;

private:
    SharedSendState &state;
    pid_t child = -1;
    int text = -1;
    int status = 0;
};

// Mirrors the screen that DISPLAY names, in match mode, until it is asked to end.
int mirror(SharedSendState &state, const Plan &plan);

// Sends the first datagrams of `model` repeatedly, one frame every `period`.
int sendBare(SharedSendState &state, const SharedSendState &model, std::chrono::nanoseconds period);

} // namespace load
