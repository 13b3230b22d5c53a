#include "tools/lightbridge/packet.h"

namespace lightbridge {

enum Form { drgb = 2, drgbw = 3, dnrgb = 4 };

static constexpr std::size_t mostFromFirst = 490; // pixels, of DRGB
static constexpr std::size_t mostAnywhere = 489;  // of DNRGB
static constexpr std::size_t patience = 2;        // seconds
static constexpr std::size_t endless = 255;

void encodeWled(const Stream &stream, const Frame &frame, const Emit &emit) {
    const std::size_t seconds = frame.isLast ? endless : patience;
    const std::size_t pixels = frame.data.size() / stream.channels;
    const auto begin = [&](Form form) {
        Packet packet;
        packet.put8(form);
        packet.put8(seconds);
        return packet;
    };
    if (stream.channels == 4 || (stream.firstPixel == 0 && pixels <= mostFromFirst)) {
        Packet packet = begin(stream.channels == 4 ? drgbw : drgb);
        packet.put(frame.data);
        emit(packet.all(), 0);
        return;
    }
    for (std::size_t i = 0; i < pixels; i += mostAnywhere) {
        Packet packet = begin(dnrgb);
        packet.put16(stream.firstPixel + i);
        packet.put(frame.data.subspan(i * 3, 3 * std::min(mostAnywhere, pixels - i)));
        emit(packet.all(), 0);
    }
}

} // namespace lightbridge
