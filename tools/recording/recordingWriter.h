// Writes received datagrams to a recording.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/wall/clock.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace panelwall {

// Owns the file. One thread at a time. The recording is complete after finish(); until then the
// file is a recording cut off at some datagram. After a failed write nothing more is written, and
// error() returns the reason.
class RecordingWriter {
public:
    // Creates or truncates the file and writes the header; error() reports a failure. `start` is
    // the recording's time 0.
    RecordingWriter(const std::string &path, const config::Document &document,
                    Clock::time_point start);
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter &) = delete;
    RecordingWriter &operator=(const RecordingWriter &) = delete;

    // Adds a datagram for device number `device` (its index in the document). Each device's
    // datagrams must come in order of time; those of different devices may be interleaved in any
    // order within a batch.
    void note(std::size_t device, std::span<const std::uint8_t> bytes, Clock::time_point arrival);

    // Sorts the datagrams noted since the last flush by time, and writes them.
    void flushBatch();

    // Flushes, and ends the recording with `end` as its end time.
    void finish(Clock::time_point end);

    // Why writing failed; empty if it has not.
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
