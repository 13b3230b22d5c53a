// One accepted connection, as the HTTP library reads and writes it. The library bounds neither how
// many lines a request has and how long they are, nor the time that they take together; this does.
#pragma once

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <httplib.h>
#include <poll.h>

namespace panelwall {

// One thread.
class Connection : public httplib::Stream {
public:
    static constexpr std::chrono::seconds requestTime{5}; // for the whole request
    static constexpr std::size_t largestRequest = 16384;
    static constexpr std::chrono::seconds writeTime{5}; // for each part of the answer

    // Owns the first descriptor. Nothing waits any more once the other one is readable.
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

    // Ends sending and reads on for a moment, so that a client that is still sending gets to see
    // the answer instead of a reset connection.
    void finish() {
        shutdown(fd, SHUT_WR);
        const auto deadline = Clock::now() + std::chrono::milliseconds(500);
        char scrap[4096];
        for (int reads = 0; reads < 64 && wait(POLLIN, deadline); ++reads)
            if (recv(fd, scrap, sizeof scrap, 0) <= 0)
                return;
    }

    // Nobody asks for these.
    void get_remote_ip_and_port(std::string &, int &) const override {}
    void get_local_ip_and_port(std::string &, int &) const override {}
    socket_t socket() const override { return fd; }

private:
    using Clock = std::chrono::steady_clock;

    // False when the deadline passes, or nothing shall wait any more.
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
