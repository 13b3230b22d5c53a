// Reads a recording, datagram by datagram.
#pragma once

#include "tools/config/configDocument.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <stdexcept>
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
    // Reads up to the first datagram; error() tells when that fails. `stream` is at the beginning
    // of the recording.
    explicit RecordingReader(std::unique_ptr<std::istream> stream);

    // The same from a file. Only a regular file will do: reading from anything else could wait.
    explicit RecordingReader(const std::string &path);

    const config::Document &document() const { return recorded; }

    // Reads the next datagram into `datagram`. False when there is none: at the end of the
    // recording, or at a fault, and from then on.
    bool next(RecordedDatagram &datagram);

    // The time of the last datagram, or once next() has returned false without a fault, when the
    // recording ended.
    std::chrono::microseconds time() const { return latest; }

    // The first thing wrong with the file, in words and on one line; empty while nothing is.
    const std::string &error() const { return fault; }

private:
    void readHead();

    // These throw what is wrong, in words, when they do not find what they are to read.
    void checkMagic();
    int readByte();
    std::uint64_t readNumber(std::uint64_t largest, const char *what);        // which `what` names
    template <typename Bytes> void readBytes(Bytes &bytes, std::size_t size); // string or vector
    std::chrono::microseconds readTime();                                     // of this record
    void readEnd();

    // To be thrown where the file ends too early.
    std::runtime_error cutOff() const;

    std::unique_ptr<std::istream> input;
    std::uint64_t offset = 0; // of the next byte
    config::Document recorded;
    std::chrono::microseconds latest{}; // what time() returns
    std::uint64_t handedOut = 0;        // datagrams
    bool ended = false;                 // and read to its end
    std::string fault;
};

} // namespace panelwall
