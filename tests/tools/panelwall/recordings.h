// Artificial recordings for tests.
#pragma once

#include "tools/recording/recordingReader.h"

#include <string>
#include <vector>

namespace test {

using RecordedDatagram = panelwall::RecordedDatagram;

// Devices of one panel each, with identifier 1, at these addresses, in wide layout.
config::Document wideDevices(const std::vector<std::string> &ips);

// A datagram that is well-formed for such a device.
std::vector<std::uint8_t> panelOne(int red, int green = 0, int blue = 0);

// The recording's bytes, as the program writes them; `end` in microseconds.
std::string record(const config::Document &document, const std::vector<RecordedDatagram> &datagrams,
                   long end);

// The result of reading a recording.
struct Read {
    bool head = false;
    std::vector<RecordedDatagram> datagrams;
    long end = 0; // microseconds
    std::string error;
    config::Document document;
};
Read readRecording(const std::string &bytes);

} // namespace test
