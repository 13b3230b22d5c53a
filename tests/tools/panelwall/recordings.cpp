#include "tests/tools/panelwall/recordings.h"

#include "tests/tools/panelwall/wallSetup.h"
#include "tools/recording/recordingWriter.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace test {

using panelwall::Clock;

config::Document wideDevices(const std::vector<std::string> &ips) {
    config::Document document;
    document.displayID = 1;
    for (const std::string &ip : ips) {
        config::DeviceEntry device;
        device.ip = ip;
        device.controlVersion = 2;
        device.scaleFactor = 1.5;
        device.panels.push_back({1, 100, 200});
        document.devices.push_back(device);
    }
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
    panelwall::RecordingWriter writer;
    if (!writer.open(folder.file("recording"), document, start).empty())
        throw std::runtime_error("no recording");
    for (const RecordedDatagram &datagram : datagrams)
        writer.note(datagram.device, datagram.bytes, start + datagram.time);
    writer.finish(start + std::chrono::microseconds(end));
    if (!writer.error().empty())
        throw std::runtime_error(writer.error());
    return readBytes(folder.file("recording"));
}

std::string readBytes(const std::string &path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

Read readRecording(const std::string &bytes) {
    std::istringstream input(bytes);
    panelwall::RecordingReader reader(input);
    Read read;
    read.head = reader.readHead();
    if (read.head) {
        read.document = reader.document();
        RecordedDatagram datagram;
        while (reader.next(datagram))
            read.datagrams.push_back(datagram);
    }
    read.end = static_cast<long>(reader.end().count());
    read.error = reader.error();
    return read;
}

} // namespace test
