#include "tools/lightbridge/packet.h"

namespace lightbridge {

static constexpr std::size_t mostData = 1440; // whole pixels of 3 and of 4 bytes
static constexpr std::size_t version1 = 0x40;
static constexpr std::size_t push = 0x01;
static constexpr std::size_t rgb8 = 0x0b;
static constexpr std::size_t rgbw8 = 0x1b;
static constexpr std::size_t defaultOutput = 1;
static constexpr std::size_t sequences = 15; // 1 to 15

void encodeDdp(const Stream &stream, const Frame &frame, const Emit &emit) {
    const std::size_t packets = (frame.data.size() + mostData - 1) / mostData;
    for (std::size_t i = 0; i < packets; ++i) {
        const std::size_t begin = i * mostData;
        const Bytes part = frame.data.subspan(begin, std::min(mostData, frame.data.size() - begin));
        Packet packet;
        packet.put8(version1 | (i + 1 == packets ? push : 0));
        packet.put8(1 + (frame.number * packets + i) % sequences);
        packet.put8(stream.channels == 4 ? rgbw8 : rgb8);
        packet.put8(defaultOutput);
        packet.put32(stream.firstPixel * stream.channels + begin);
        packet.put16(part.size());
        packet.put(part);
        emit(packet.all(), 0);
    }
}

} // namespace lightbridge
