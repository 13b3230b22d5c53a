// Plays a recording back: each datagram at its time, and to its device if need be.
#pragma once

#include "tools/recording/recordingReader.h"
#include "tools/wall/receiver.h"

#include <map>

namespace panelwall {

// Sends recorded datagrams to the devices that they were recorded for. Owns its sockets, one per
// address family in use. One thread at a time.
class Sender {
public:
    Sender() = default;
    ~Sender();
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;

    // The devices' endpoints, in order. Returns the reason when no socket can be opened, else
    // nothing. Called once.
    std::string open(std::vector<Endpoint> endpoints_);

    // Sends one datagram to device number `device`, waiting for room in the socket's queue. One
    // that cannot be sent is counted.
    void send(std::size_t device, std::span<const std::uint8_t> bytes);

    // How many were sent and how many could not be, in words.
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
    // With `sender_`, every datagram goes out as well. Both outlive the player. A `speed_` of 2
    // takes half the time; it is greater than 0.
    Player(RecordingReader &reader_, double speed_, Sender *sender_);

    // When to call playDue(): shortly before the next datagram's time, at the latest; when
    // ended() becomes true, once there is none; never, once it has.
    Clock::time_point due() const;

    // Hands over the datagrams whose time has come, some thousand at most; waits for a moment when
    // the next one's time is about to come. True when there was any.
    bool playDue(const Receiver::Handler &handler);

    // Whether the recording was over, up to its last moment or its fault, when playDue() returned.
    bool ended() const { return over; }

private:
    // The moment at which what was recorded at `time` is due.
    Clock::time_point momentOf(std::chrono::microseconds time) const;

    RecordingReader &reader;
    const double speed;
    Sender *const sender;

    std::optional<Clock::time_point> begin; // none before the first call of playDue()
    RecordedDatagram upcoming;
    bool more; // `upcoming` is to be played
    bool over = false;
};

} // namespace panelwall
