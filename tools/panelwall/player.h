// Plays a recording back: each datagram at its time, optionally also sent to its device.
#pragma once

#include "tools/recording/recordingReader.h"
#include "tools/wall/receiver.h"

#include <map>

namespace panelwall {

// Sends recorded datagrams to the devices' endpoints. Owns its sockets, one per address family in
// use. One thread at a time.
class Sender {
public:
    Sender() = default;
    ~Sender();
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;

    // `endpoints_` are the devices', in order. Returns the reason if a socket cannot be opened,
    // else an empty string. Called once.
    std::string open(std::vector<Endpoint> endpoints_);

    // Sends a datagram to device number `device`; blocks while the socket's queue is full. Counts
    // failures.
    void send(std::size_t device, std::span<const std::uint8_t> bytes);

    // How many were sent and how many could not be, as text.
    std::string report() const;

private:
    std::vector<Endpoint> endpoints;
    std::map<int, int> sockets; // by address family
    std::uint64_t sent = 0;
    std::uint64_t failed = 0;
    std::string lastFailure;
};

// One thread at a time. The recording's time 0 is the first call of playDue().
class Player {
public:
    // Unless `sender_` is null, every datagram is also sent. Reader and sender must outlive the
    // player. A `speed_` of 2 halves the duration; it must be greater than 0.
    Player(RecordingReader &reader_, double speed_, Sender *sender_);

    // When to call playDue() next: at once at the start, then shortly before the next datagram is
    // due; after the last datagram, when the recording ends; never (the latest time) once ended().
    Clock::time_point due() const;

    // Passes the datagrams that are due to `handler`, a few thousand at most; sleeps up to 1.5 ms
    // for one that is almost due. True if there were any.
    bool playDue(const Receiver::Handler &handler);

    // Whether the recording had been played to its end or its fault when playDue() last returned.
    bool ended() const { return over; }

private:
    // When a datagram recorded at `time` is due.
    Clock::time_point momentOf(std::chrono::microseconds time) const;

    RecordingReader &reader;
    const double speed;
    Sender *const sender;

    std::optional<Clock::time_point> begin; // none before the first call of playDue()
    RecordedDatagram upcoming;
    bool more; // whether `upcoming` is to be played
    bool over = false;
};

} // namespace panelwall
