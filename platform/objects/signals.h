// Keeps the host's signals away from this platform's threads, and the SIGPIPE of a broken socket
// away from the host's handler. The host may have installed handlers that end the process.
#pragma once

#include <csignal>
#include <thread>
#include <utility>

namespace platform {

// While it exists, all signals are blocked on the calling thread, except for those that a faulty
// instruction raises.
class QuietSignals {
public:
    QuietSignals();
    ~QuietSignals();
    QuietSignals(const QuietSignals &) = delete;
    QuietSignals &operator=(const QuietSignals &) = delete;

private:
    sigset_t before;
};

// Required around calls that may write to the server from a host thread: blocks SIGPIPE, and
// discards one that such a write raised. A SIGPIPE sent meanwhile by another thread or process
// reaches the host afterwards.
class SigpipeGuard {
public:
    SigpipeGuard();
    ~SigpipeGuard();
    SigpipeGuard(const SigpipeGuard &) = delete;
    SigpipeGuard &operator=(const SigpipeGuard &) = delete;

private:
    sigset_t before;
    bool wasPending;
};

// Starts a thread that receives none of the host's signals from its first instruction on.
template <typename Function> std::thread startThread(Function &&function) {
    const QuietSignals quiet;
    return std::thread(std::forward<Function>(function));
}

} // namespace platform
