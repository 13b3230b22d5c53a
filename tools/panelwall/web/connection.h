// One accepted connection, as the HTTP library reads and writes it, with limits on both.
#pragma once

#include <chrono>
#include <cstddef>
#include <httplib.h>
#include <string>

namespace panelwall {

// Gives a client so long to send its whole request and so many bytes for it, and then so long to
// take each part of the answer; beyond that, reading and writing fail and the library gives up.
// Owns the descriptor. Used by the connection's thread; only shutDown() may come from another.
class Connection : public httplib::Stream {
public:
    static constexpr std::chrono::seconds requestTime{5};
    static constexpr std::size_t largestRequest = 16384;
    static constexpr std::chrono::seconds writeTime{5};

    explicit Connection(int descriptor);
    ~Connection() override;
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char *bytes, std::size_t size) override;
    ssize_t write(const char *bytes, std::size_t size) override;
    void get_remote_ip_and_port(std::string &ip, int &port) const override;
    void get_local_ip_and_port(std::string &ip, int &port) const override;
    socket_t socket() const override { return fd; }

    // Ends sending and reads on for a moment, so that a client that is still sending gets to see
    // the answer instead of a reset connection.
    void finish();

    // Makes every read and write fail from now on.
    void shutDown();

private:
    // Waits for `events`; false when the deadline passes or the connection is shut down.
    bool wait(short events, std::chrono::steady_clock::time_point deadline) const;

    int fd;
    std::chrono::steady_clock::time_point requestEnd;
    std::size_t received = 0;
};

} // namespace panelwall
