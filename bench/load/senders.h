// The processes that send: a host of the library, and a bare sender to compare it with.
#pragma once

#include "bench/load/plan.h"
#include "bench/load/sending.h"

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>

namespace load {

// A child process with nothing open but its standard streams. Ended with this object at the latest.
class Sender {
public:
    // `work` returns the exit status. To be made before this process has any other thread.
    Sender(Sending &sending, const Plan &plan, const std::function<int()> &work);
    ~Sender();
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;

    pid_t pid() const { return child; }

    // What it has written to its standard output so far.
    std::string output() const;

    // Asks it to end.
    void stop();

    bool hasEnded();

    // Whether it ended by itself, with success. Once it has ended.
    bool succeeded() const;

private:
    Sending &sending;
    pid_t child = -1;
    int text = -1;
    int status = 0;
};

// Mirrors the screen that DISPLAY names, in match mode, until it is asked to end.
int mirror(Sending &sending, const Plan &plan);

// Sends the first datagrams of `model` again and again, a frame every `period`.
int sendBare(Sending &sending, const Sending &model, std::chrono::nanoseconds period);

} // namespace load
