// Two recordings, compared device by device.
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

// Index of a recording in everything that comes in pairs: the first, or the second.
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
    double squares = 0.0; // of the deviations from the average
    double most = 0.0;
};

struct NumberedDatagram {
    std::uint64_t number = 0; // among the device's datagrams in its recording, from 0
    std::chrono::microseconds time{};
    std::vector<std::uint8_t> bytes;
};

// What has been found out about a device.
struct DeviceFindings {
    std::array<std::uint64_t, 2> datagrams{};
    std::array<std::uint64_t, 2> malformed{};
    std::uint64_t same = 0;
    std::uint64_t changed = 0;           // another datagram stands in its place
    std::array<std::uint64_t, 2> only{}; // there is none in its place

    // The first place where the recordings part: a datagram of each, or of one only.
    std::array<std::optional<NumberedDatagram>, 2> firstDifference;

    std::array<Intervals, 2> intervals;

    // How much later, by the clocks of the recordings, a datagram comes in the second than in the
    // first: the least and the greatest of all that are the same.
    std::optional<std::chrono::microseconds> leastDelay;
    std::optional<std::chrono::microseconds> greatestDelay;

    bool differs() const { return changed > 0 || only[first] > 0 || only[second] > 0; }
};

// Compares what one device was sent, while the recordings are read. Finds what was added, left out
// and changed, as long as that is no more than some dozens of datagrams in a row. Holds only
// datagrams that have no counterpart yet. One thread at a time.
class DeviceComparison {
public:
    explicit DeviceComparison(Layout layout) : layoutOfBoth(layout) {}

    // The next datagram in one of the recordings.
    void take(Side side, const RecordedDatagram &datagram);

    // There are no more in this one.
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
    void settle();
    bool settleFronts();
    void settleChange(std::size_t ofFirst, std::size_t ofSecond);
    void settleOnly(Side side);
    void noteDifference(std::initializer_list<Side> sides);
    void drop(Side side);

    Layout layoutOfBoth;
    std::array<std::deque<Waiting>, 2> queues;
    std::array<bool, 2> ended{};
    std::size_t heldBytes = 0;
    DeviceFindings found;
};

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
using OpenRecording = std::function<RecordingReader(Side)>;

// Compares what can be read, in bounded memory: bytes held beyond `mostHeld` make it read the
// recordings once more for some of the devices.
Comparison compareRecordings(const OpenRecording &open, std::size_t mostHeld = 64u << 20);

// The comparison in words, line by line; the last one says whether they differ.
std::vector<std::string> describe(const Comparison &comparison);

// The first thing in which two datagrams of a device differ, in words.
std::string describeDifference(Layout layout, const std::vector<std::uint8_t> &left,
                               const std::vector<std::uint8_t> &right);

} // namespace panelwall
