#include "tests/tools/panelwall/recordings.h"

#include "tests/support/files.h"
#include "tools/recording/recordingWriter.h"

#include <sstream>
#include <stdexcept>

namespace test {

using panelwall::Clock;

config::Document wideDevices(const std::vector<std::string> &ips) {
    config::Document document;
    document.displayID = 1;
    for (const std::string &ip : ips)
        document.devices.push_back({ip, 2, 0, 1.5, {{1, 100, 200}}});
    return document;
}

std::vector<std::uint8_t> panelOne(int red, int green, int blue) {
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    return {0, 1, 0, 1, byte(red), byte(green), byte(blue), 0, 0, 1};
}

std::string record(const config::Document &document, const std::vector<RecordedDatagram> &datagrams,
                   long end) {
    const Folder folder;
    const auto start = Clock::now();
    panelwall::RecordingWriter writer(folder.file("recording"), document, start);
    for (const RecordedDatagram &datagram : datagrams)
        writer.note(datagram.device, datagram.bytes, start + datagram.time);
    writer.finish(start + std::chrono::microseconds(end));
    if (!writer.error().empty())
        throw std::runtime_error(writer.error());
    return fileText(folder.file("recording"));
}

Read readRecording(const std::string &bytes) {
    panelwall::RecordingReader reader(std::make_unique<std::istringstream>(bytes));
    Read read;
    read.head = reader.error().empty();
    if (read.head) {
        read.document = reader.document();
        RecordedDatagram datagram;
        while (reader.next(datagram))
            read.datagrams.push_back(datagram);
    }
    read.end = static_cast<long>(reader.time().count());
    read.error = reader.error();
    return read;
}

} // namespace test
