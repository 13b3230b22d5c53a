// Plays a recording back: each datagram at its time.
#pragma once

#include "tools/panelwall/sender.h"
#include "tools/recording/recordingReader.h"
#include "tools/wall/receiver.h"

namespace panelwall {

// One thread at a time. The recording's time 0 is the first call of playDue().
class Player {
public:
    // `reader_` has read the head. With `sender_`, every datagram goes out as well. Both
    // outlive the player. A `speed_` of 2 takes half the time; it is greater than 0.
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
    void readNext();

    RecordingReader &reader;
    const double speed;
    Sender *const sender;

    bool begun = false;
    Clock::time_point begin;
    RecordedDatagram upcoming;
    bool more = true; // `upcoming` is to be played
    bool over = false;
};

} // namespace panelwall
