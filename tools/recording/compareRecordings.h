// Compares two recordings, device by device.
#pragma once

#include "tools/lights/datagram.h"
#include "tools/recording/recordingReader.h"

#include <array>
#include <deque>
#include <functional>
#include <initializer_list>
#include <optional>

namespace panelwall {

using lights::Layout;

// Index into every pair below: the first or the second recording.
enum Side : std::size_t { first = 0, second = 1 };
inline constexpr std::array bothSides{first, second};
inline Side other(Side side) {
    return side == first ? second : first;
}

// The intervals between a device's datagrams, in milliseconds.
class Intervals {
public:
    void note(std::chrono::microseconds time);

    std::uint64_t count() const { return number; }
    double mean() const { return average; }
    double spread() const; // standard deviation
    double longest() const { return most; }

private:
    std::optional<std::chrono::microseconds> last;
    std::uint64_t number = 0;
    double average = 0.0;
    double squares = 0.0; // sum of the squared deviations from the average
    double most = 0.0;
};

struct NumberedDatagram {
    std::uint64_t number = 0; // among the device's datagrams in its recording, from 0
    std::chrono::microseconds time{};
    std::vector<std::uint8_t> bytes;
};

// The result of comparing one device.
struct DeviceFindings {
    std::array<std::uint64_t, 2> datagrams{};
    std::array<std::uint64_t, 2> malformed{};
    std::uint64_t same = 0;
    std::uint64_t changed = 0;           // replaced by a different datagram
    std::array<std::uint64_t, 2> only{}; // without a counterpart

    // The first difference: a datagram of each recording, or of one only.
    std::array<std::optional<NumberedDatagram>, 2> firstDifference;

    std::array<Intervals, 2> intervals;

    // How much later, in recording time, a datagram comes in the second recording than the same one
    // in the first: the minimum and maximum.
    std::optional<std::chrono::microseconds> leastDelay;
    std::optional<std::chrono::microseconds> greatestDelay;

    bool differs() const { return changed > 0 || only[first] > 0 || only[second] > 0; }
};

// Compares the datagrams of one device while the recordings are read. Finds added, missing and
// changed datagrams, up to a few dozen in a row. Holds only datagrams that have no counterpart yet.
// One thread at a time.
class DeviceComparison {
public:
    explicit DeviceComparison(Layout layout) : layoutOfBoth(layout) {}

    // Adds the next datagram of one recording.
    void take(Side side, const RecordedDatagram &datagram);

    // Marks the end of one recording.
    void end(Side side);

    // Bytes held.
    std::size_t held() const { return heldBytes; }

    // How many datagrams of a recording are held.
    std::size_t waiting(Side side) const { return queues[side].size(); }

    // Complete once both recordings have ended.
    const DeviceFindings &findings() const { return found; }

private:
    struct Waiting {
        NumberedDatagram datagram;
        std::size_t hash;
    };

    static bool isSame(const Waiting &left, const Waiting &right);
    void matchQueues();
    bool matchFronts();
    void recordChange(std::size_t ofFirst, std::size_t ofSecond);
    void recordOnly(Side side);
    void noteDifference(std::initializer_list<Side> sides);
    void drop(Side side);

    Layout layoutOfBoth;
    std::array<std::deque<Waiting>, 2> queues;
    std::array<bool, 2> ended{};
    std::size_t heldBytes = 0;
    DeviceFindings found;
};

// A device that is in both recordings, matched by address and port, or in only one. `index` is its
// index in each recording's document.
struct ComparedDevice {
    std::array<std::optional<std::size_t>, 2> index;
    Layout layout = Layout::Wide; // the same in both: the port determines it
    DeviceFindings findings;
    std::vector<std::string> configuration; // how the documents' entries differ, as text

    bool isInBoth() const { return index[first] && index[second]; }
    bool differs() const { return !isInBoth() || findings.differs() || !configuration.empty(); }
};

struct Comparison {
    std::array<config::Document, 2> documents;
    std::vector<ComparedDevice> devices;    // of the first, then of the second only
    std::vector<std::string> configuration; // how the documents differ beyond their devices
    std::array<std::string, 2> errors; // the fault in each file; only data before it is compared

    bool differs() const;
};

// Opens one of the recordings at its beginning. Called for the document and for each pass; there
// are several passes if the datagrams to hold exceed the memory limit.
using OpenRecording = std::function<RecordingReader(Side)>;

// Compares all that can be read, in bounded memory: if it had to hold more than `maxHeld` bytes,
// it reads the recordings again for some of the devices.
Comparison compareRecordings(const OpenRecording &open, std::size_t maxHeld = 64u << 20);

// The comparison as lines of text; the last line says whether the recordings differ.
std::vector<std::string> describe(const Comparison &comparison);

// The first difference between two datagrams of a device, as text.
std::string describeDifference(Layout layout, const std::vector<std::uint8_t> &left,
                               const std::vector<std::uint8_t> &right);

} // namespace panelwall
