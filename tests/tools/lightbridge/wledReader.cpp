#include "tests/tools/lightbridge/wledReader.h"

#include <algorithm>

namespace test {

namespace {

struct Protocol {
    const char *name;
    std::size_t header;
    std::size_t channels;
    std::size_t limit; // in pixels per packet
};

const Protocol protocols[] = {{"DRGB", 2, 3, 490}, {"DRGBW", 2, 4, 367}, {"DNRGB", 4, 3, 489}};

} // namespace

WledReader::Reading WledReader::read(const Datagram &packet) {
    const auto wrong = [](std::size_t at, const std::string &what) {
        Reading reading;
        reading.malformed = "byte " + std::to_string(at) + ": " + what;
        return reading;
    };
    if (packet.empty())
        return wrong(0, "the packet ends within its header");
    if (packet[0] == 1)
        return wrong(0, "protocol 1 is WARLS, which is refused");
    if (packet[0] < 2 || packet[0] > 4)
        return wrong(0, "protocol " + std::to_string(packet[0]) +
                            ", none of 2 (DRGB), 3 (DRGBW) and 4 (DNRGB)");
    const auto &[name, header, channels, limit] = protocols[packet[0] - 2];
    if (packet.size() < header)
        return wrong(packet.size(), "the packet ends within its header");
    if (packet[1] == 0)
        return wrong(1, "time-out 0, not 1 to 255");

    Reading reading;
    reading.protocol = packet[0];
    reading.timeout = packet[1];
    reading.first = header == 4 ? packet[2] * 256u + packet[3] : 0;
    reading.count = (packet.size() - header) / channels;
    const std::string length = std::to_string(strip.size());
    const std::string beyond = ", but the strip's length is " + length;
    if (packet.size() == header)
        return wrong(header, "no pixels");
    if (header == 4 && reading.first >= strip.size())
        return wrong(2, "start index " + std::to_string(reading.first) + beyond);
    if ((packet.size() - header) % channels != 0)
        return wrong(packet.size(),
                     "the packet ends within a pixel of " + std::to_string(channels) + " bytes");
    if (reading.count > limit)
        return wrong(header + limit * channels, std::to_string(reading.count) +
                                                    " pixels, more than the " +
                                                    std::to_string(limit) + " of " + name);
    const std::size_t room = strip.size() - reading.first;
    if (reading.count > room)
        return wrong(header + room * channels, "pixel " + length + beyond);

    for (std::size_t i = 0; i < reading.count; ++i) {
        WledPixel &pixel = strip[reading.first + i];
        pixel = {};
        std::copy_n(&packet[header + i * channels], channels, pixel.begin());
    }
    return reading;
}

} // namespace test
