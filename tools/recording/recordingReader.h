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
    std::chrono::microseconds time{}; // since the recording began; never decreases
    std::vector<std::uint8_t> bytes;
};

// Accepts any bytes: error() reports the first fault, after every datagram before it has been
// returned. Holds only the document and one datagram, however long the file. One thread at a time.
class RecordingReader {
public:
    // Reads the header; error() reports a failure. `stream` must be at the beginning of the
    // recording.
    explicit RecordingReader(std::unique_ptr<std::istream> stream);

    // The same from a file, which must be regular: reading from anything else could block.
    explicit RecordingReader(const std::string &path);

    const config::Document &document() const { return recorded; }

    // Reads the next datagram into `datagram`. Returns false at the end of the recording or at a
    // fault, and on every call after that.
    bool next(RecordedDatagram &datagram);

    // The time of the last datagram or, once the recording's end has been read, of that end.
    std::chrono::microseconds time() const { return latest; }

    // The first fault in the file, as one line of text; empty if none has been found.
    const std::string &error() const { return fault; }

private:
    void readHead();

    // These throw a std::runtime_error that describes the fault when they cannot read their item.
    void checkMagic();
    int readByte();
    std::uint64_t readNumber(std::uint64_t largest, const char *what);        // `what` is its name
    template <typename Bytes> void readBytes(Bytes &bytes, std::size_t size); // string or vector
    std::chrono::microseconds readTime();                                     // of the record
    void readEnd();

    // The error to throw where the file ends too early or cannot be read further.
    std::runtime_error cutOff() const;

    std::unique_ptr<std::istream> input;
    std::uint64_t offset = 0; // of the next byte
    config::Document recorded;
    std::chrono::microseconds latest{}; // what time() returns
    std::uint64_t handedOut = 0;        // datagrams
    bool ended = false;                 // the end has been read
    std::string fault;
};

} // namespace panelwall
