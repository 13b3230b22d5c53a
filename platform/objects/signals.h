// Keeps this platform's threads out of the host's signals, and its broken sockets out of the
// host's SIGPIPE handler. The host may have handlers installed that end the process.
#pragma once

#include <csignal>
#include <thread>
#include <utility>

namespace platform {

// While it lives, the calling thread can neither be interrupted nor be chosen for a signal, except
// for those that a faulty instruction raises.
class QuietSignals {
public:
    QuietSignals();
    ~QuietSignals();
    QuietSignals(const QuietSignals &) = delete;
    QuietSignals &operator=(const QuietSignals &) = delete;

private:
    sigset_t before;
};

// Put around calls that may write to the server from a thread of the host: holds SIGPIPE back, and
// swallows one that such a write raised. One that somebody sent meanwhile reaches the host in the
// end.
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
