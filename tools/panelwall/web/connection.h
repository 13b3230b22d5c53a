// One accepted connection, which the HTTP library reads and writes. This class limits the size of
// a request and the time to receive it; the library limits neither the number and length of a
// request's lines nor their total time.
#pragma once

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <httplib.h>
#include <poll.h>

namespace panelwall {

// Used by one thread.
class Connection : public httplib::Stream {
public:
    static constexpr std::chrono::seconds requestTime{5}; // for the whole request
    static constexpr std::size_t largestRequest = 16384;
    static constexpr std::chrono::seconds writeTime{5}; // for each part of the reply

    // Owns `descriptor`, not `stop_`. All waiting ends once `stop_` is readable.
    Connection(int descriptor, int stop_) : fd(descriptor), stop(stop_) {
        fcntl(fd, F_SETFD, FD_CLOEXEC);
        fcntl(fd, F_SETFL, O_NONBLOCK);
        const int yes = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    }
    ~Connection() override { close(fd); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool is_readable() const override { return wait(POLLIN, requestEnd); }
    bool is_writable() const override { return wait(POLLOUT, Clock::now() + writeTime); }

    ssize_t read(char *bytes, std::size_t size) override {
        const std::size_t most = std::min(size, largestRequest - received);
        const ssize_t taken = is_readable() ? recv(fd, bytes, most, 0) : -1;
        received += taken > 0 ? static_cast<std::size_t>(taken) : 0;
        return taken;
    }

    ssize_t write(const char *bytes, std::size_t size) override {
        return is_writable() ? send(fd, bytes, size, 0) : -1;
    }

    // Ends sending and keeps reading for a moment, so that a client that is still sending receives
    // the reply instead of a connection reset.
    void finish() {
        shutdown(fd, SHUT_WR);
        const auto deadline = Clock::now() + std::chrono::milliseconds(500);
        char scrap[4096];
        for (int reads = 0; reads < 64 && wait(POLLIN, deadline); ++reads)
            if (recv(fd, scrap, sizeof scrap, 0) <= 0)
                return;
    }

    // Required by the base class but not needed here.
    void get_remote_ip_and_port(std::string &, int &) const override {}
    void get_local_ip_and_port(std::string &, int &) const override {}
    socket_t socket() const override { return fd; }

private:
    using Clock = std::chrono::steady_clock;

    // False when the deadline passes or `stop` is readable.
    bool wait(short events, Clock::time_point deadline) const {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd waiting[2] = {{fd, events, 0}, {stop, POLLIN, 0}};
        return left.count() > 0 && poll(waiting, 2, static_cast<int>(left.count())) > 0 &&
               waiting[1].revents == 0;
    }

    const int fd;
    const int stop;
    const Clock::time_point requestEnd = Clock::now() + requestTime;
    std::size_t received = 0;
};

} // namespace panelwall
