// Writes what arrives into a recording.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/wall/clock.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace panelwall {

// Owns the file. One thread at a time. What was written is a whole recording once finish() was
// called; before that, a recording that is cut off at some datagram. After a failed write it writes
// nothing more, and error() tells why.
class RecordingWriter {
public:
    // Makes the file, or empties it, and writes the head; error() tells when that fails. `start` is
    // the recording's time 0.
    RecordingWriter(const std::string &path, const config::Document &document,
                    Clock::time_point start);
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter &) = delete;
    RecordingWriter &operator=(const RecordingWriter &) = delete;

    // One datagram for device number `device` (its index in the document). The datagrams of a
    // device come in the order of their times; those of several may be mixed up within a turn.
    void note(std::size_t device, std::span<const std::uint8_t> bytes, Clock::time_point arrival);

    // Puts the datagrams noted since the last turn into the order of their times, and writes them.
    void endTurn();

    // Ends the recording at `end`, and the turn.
    void finish(Clock::time_point end);

    // Why writing failed; empty as long as it has not.
    const std::string &error() const { return failure; }

    std::uint64_t datagrams() const { return writtenDatagrams; }
    std::uint64_t bytes() const { return writtenBytes; }

private:
    struct Noted {
        Clock::time_point arrival;
        std::size_t device;
        std::size_t offset; // in `notedBytes`
        std::size_t size;
    };

    // The time since the last record, in whole microseconds. Times never go back in a recording.
    std::uint64_t advanceTo(Clock::time_point time);
    void write(const std::string &text);

    int file = -1;
    const Clock::time_point begin;
    std::chrono::microseconds lastTime{}; // since `begin`
    std::vector<Noted> noted;
    std::string notedBytes;
    std::uint64_t writtenDatagrams = 0;
    std::uint64_t writtenBytes = 0;
    std::string failure;
};

} // namespace panelwall
