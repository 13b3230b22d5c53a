// Two recordings, compared device by device.
#pragma once

#include "tools/recording/deviceComparison.h"

#include <functional>
#include <memory>

namespace panelwall {

// A device that stands in both recordings, matched by address and port, or in one only. The
// index is that of the recording's document.
struct ComparedDevice {
    std::array<std::optional<std::size_t>, 2> index;
    Layout layout = Layout::Wide; // the port goes with it
    DeviceFindings findings;
    std::vector<std::string> configuration; // how the document's entries differ, in words

    bool isInBoth() const { return index[first] && index[second]; }
    bool differs() const { return !isInBoth() || findings.differs() || !configuration.empty(); }
};

struct Comparison {
    std::array<config::Document, 2> documents;
    std::vector<ComparedDevice> devices;    // those of the first, then those of the second only
    std::vector<std::string> configuration; // how the documents differ beyond their devices
    std::array<std::string, 2> errors; // what is wrong with each file; compared is what is before

    bool differs() const;
};

// Opens one of the recordings at its beginning. It is opened again when what is to be remembered
// outgrows the memory set aside.
using OpenRecording = std::function<std::unique_ptr<std::istream>(Side)>;

// Compares what can be read, in bounded memory: bytes held beyond `mostHeld` make it read the
// recordings once more for some of the devices.
Comparison compareRecordings(const OpenRecording &open, std::size_t mostHeld = 64u << 20);

// The comparison in words, line by line; the last one says whether they differ.
std::vector<std::string> describe(const Comparison &comparison);

// The first thing in which two datagrams of a device differ, in words.
std::string describeDifference(Layout layout, const std::vector<std::uint8_t> &left,
                               const std::vector<std::uint8_t> &right);

} // namespace panelwall
