// Reads any bytes as a recording: all datagrams before the first fault are returned, the fault is
// reported, and the recording compares equal to itself.
#include "fuzz/require.h"
#include "fuzz/seldom.h"
#include "tools/recording/compareRecordings.h"
#include "tools/recording/recordingFormat.h"
#include "tools/recording/recordingReader.h"

#include <sstream>

using fuzz::require;
using namespace panelwall;

namespace {

// A header that random input is unlikely to contain.
std::string usualHead() {
    const std::string document =
        R"({"displayID":1,"mode":0,"devices":[)"
        R"({"ip":"a","controlVersion":1,"shapeType":0,"scaleFactor":1.0,"panels":[]},)"
        R"({"ip":"b","controlVersion":2,"shapeType":0,"scaleFactor":1.0,"panels":[]}]})";
    std::string head(recordingMagic);
    head += static_cast<char>(recordingVersion);
    appendNumber(head, 0);
    appendNumber(head, document.size());
    return head + document;
}

void readAll(const std::string &bytes) {
    RecordingReader reader(std::make_unique<std::istringstream>(bytes));
    RecordedDatagram datagram;
    auto time = std::chrono::microseconds::zero();
    while (reader.next(datagram)) {
        require(datagram.device < reader.document().devices.size(), "the device is there");
        require(datagram.time >= time, "time does not go back");
        require(datagram.bytes.size() <= bytes.size(), "no datagram is larger than the file");
        time = datagram.time;
    }
    require(!reader.next(datagram), "an end is an end");
    require(reader.time() >= time, "the end comes last");
    require(reader.error().find('\n') == std::string::npos, "a fault is told on one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0)
        return 0;
    static const std::string head = usualHead();
    const std::string rest(reinterpret_cast<const char *>(data + 1), size - 1);
    const std::string bytes = (data[0] & 1) != 0 ? head + rest : rest;
    readAll(bytes);
    if (!fuzz::isSeldom(data, size, 128))
        return 0;

    const std::string other = head + rest.substr(rest.size() / 2);
    const std::size_t maxHeld = (data[0] & 2) != 0 ? 1u << 20 : 0;
    const auto compare = [&](const std::string &left, const std::string &right) {
        const Comparison comparison = compareRecordings(
            [&](Side side) {
                return RecordingReader(
                    std::make_unique<std::istringstream>(side == first ? left : right));
            },
            maxHeld);
        for (const std::string &line : describe(comparison))
            require(line.find('\n') == std::string::npos, "a finding is told on one line");
        for (const ComparedDevice &device : comparison.devices)
            for (const Side side : bothSides)
                require(device.findings.same + device.findings.changed +
                                device.findings.only[side] ==
                            device.findings.datagrams[side],
                        "every datagram is accounted for");
        return comparison;
    };
    require(!compare(bytes, bytes).differs(), "a recording is the same as itself");
    compare(bytes, other);
    return 0;
}
