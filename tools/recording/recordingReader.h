// Reads a recording, datagram by datagram.
#pragma once

#include "tools/config/configDocument.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace panelwall {

struct RecordedDatagram {
    std::size_t device = 0;           // its index in the document
    std::chrono::microseconds time{}; // since the recording began; never less than the one before
    std::vector<std::uint8_t> bytes;
};

// Takes any bytes: what is wrong with them is told in error(), and everything before the fault
// has been handed out by then. Holds the document and one datagram, however long the file. One
// thread at a time.
class RecordingReader {
public:
    // `stream` is at the beginning of the recording, and outlives the reader.
    explicit RecordingReader(std::istream &stream) : input(stream) {}

    // Reads up to the first datagram. False when that fails. Called once, before anything else.
    bool readHead();

    const config::Document &document() const { return recorded; }

    // Reads the next datagram into `datagram`. False when there is none: at the end of the
    // recording, or at a fault, and from then on.
    bool next(RecordedDatagram &datagram);

    // When the recording ended, once next() has returned false; after a fault, the time of the last
    // datagram.
    std::chrono::microseconds end() const { return time; }

    // The first thing wrong with the file, in words and on one line; empty while nothing is.
    const std::string &error() const { return fault; }

private:
    // A number of at most `largest`; nothing, and a fault, when there is none. `what` names it.
    std::optional<std::uint64_t> readNumber(std::uint64_t largest, const char *what);

    // `size` bytes into `bytes`, a string or vector. False, and a fault, when there are not so
    // many.
    template <typename Bytes> bool readBytes(Bytes &bytes, std::size_t size);

    // The time of this record; nothing, and a fault, when that cannot be.
    std::optional<std::chrono::microseconds> readTime();
    void readEnd();
    bool checkMagic();
    bool fail(const std::string &text);
    bool failCut();

    std::istream &input;
    std::uint64_t offset = 0; // of the next byte
    config::Document recorded;
    std::chrono::microseconds time{};
    std::uint64_t handedOut = 0; // datagrams
    bool ended = false;
    std::string fault;
};

// Opens the stream that the reader reads, and reads the head. Returns what is wrong, else nothing.
// Only a regular file will do: reading from anything else could wait.
std::string openRecording(const std::string &path, std::ifstream &stream, RecordingReader &reader);

} // namespace panelwall
