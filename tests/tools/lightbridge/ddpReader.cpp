#include "tests/tools/lightbridge/ddpReader.h"

#include <cstdio>
#include <utility>

namespace test {

namespace {

constexpr std::size_t headerSize = 10;
constexpr std::size_t maximumLength = 1440;

std::string hex(unsigned byte) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%02x", byte);
    return text;
}

// 0 for any other type
std::size_t channelsOf(unsigned dataType) {
    return dataType == 0x0b ? 3 : dataType == 0x1b ? 4 : 0;
}

} // namespace

std::string DdpReader::check(const Datagram &packet) const {
    const auto wrong = [](std::size_t at, const std::string &what) {
        return "byte " + std::to_string(at) + ": " + what;
    };
    if (packet.size() < headerSize)
        return wrong(packet.size(), "the packet ends within its header");

    const unsigned flags = packet[0];
    if (flags >> 6 != 1)
        return wrong(0, "version " + std::to_string(flags >> 6) + ", not 1");
    if ((flags & 0x3e) != 0)
        return wrong(0, "flags " + hex(flags) + ", neither 0x40 nor 0x41");

    const unsigned sequence = packet[1];
    if (sequence < 1 || sequence > 15)
        return wrong(1, "sequence number " + std::to_string(sequence) + ", not 1 to 15");
    const unsigned due = lastSequence % 15 + 1;
    if (lastSequence != 0 && sequence != due)
        return wrong(1, "sequence number " + std::to_string(sequence) + ", not " +
                            std::to_string(due));

    const std::size_t channels = channelsOf(packet[2]);
    if (channels == 0)
        return wrong(2, "data type " + hex(packet[2]) + ", neither 0x0b (RGB) nor 0x1b (RGBW)");
    if (unshown() > 0 && channels != pending.channels)
        return wrong(2, "data type " + hex(packet[2]) + " within a frame of the other type");

    if (packet[3] != 1)
        return wrong(3, "destination " + std::to_string(packet[3]) + ", not 1");

    const std::size_t offset = std::size_t{packet[4]} << 24 | std::size_t{packet[5]} << 16 |
                               std::size_t{packet[6]} << 8 | packet[7];
    if (offset != start + unshown())
        return wrong(4, "offset " + std::to_string(offset) + ", not " +
                            std::to_string(start + unshown()));

    const std::size_t length = packet[8] * 256u + packet[9];
    const std::string lengthText = "length " + std::to_string(length);
    if (length != packet.size() - headerSize)
        return wrong(8, lengthText + ", but " + std::to_string(packet.size() - headerSize) +
                            " bytes follow");
    if (length == 0 || length > maximumLength)
        return wrong(8, lengthText + ", not 1 to " + std::to_string(maximumLength));
    if (length % channels != 0)
        return wrong(8, lengthText + ", not a multiple of " + std::to_string(channels));
    return {};
}

DdpReader::Reading DdpReader::read(const Datagram &packet) {
    Reading reading{check(packet), std::nullopt};
    if (!reading.malformed.empty())
        return reading;
    lastSequence = packet[1];
    pending.channels = channelsOf(packet[2]);
    pending.bytes.insert(pending.bytes.end(), packet.begin() + headerSize, packet.end());
    if ((packet[0] & 0x01) != 0)
        reading.frame = std::exchange(pending, {});
    return reading;
}

} // namespace test
