#include "tools/lightbridge/packet.h"

namespace lightbridge {

static constexpr std::size_t dataOperation = 0x5000;
static constexpr std::size_t syncOperation = 0x5200;
static constexpr std::size_t protocolVersion = 14;
static constexpr std::size_t sequences = 255; // 1 to 255

static Packet begin(std::size_t operation) {
    Packet packet;
    packet.putText("Art-Net", 8);
    packet.put16LittleEndian(operation);
    packet.put16(protocolVersion);
    return packet;
}

void encodeArtNet(const Stream &stream, const Frame &frame, const Emit &emit) {
    std::size_t universes = 0;
    forEachUniverse(stream, frame.data, [&](std::uint16_t universe, Bytes slots) {
        const std::size_t padding = slots.size() % 2;
        Packet packet = begin(dataOperation);
        packet.put8(1 + frame.number % sequences);
        packet.put8(0); // physical port
        packet.put16LittleEndian(universe);
        packet.put16(slots.size() + padding);
        packet.put(slots);
        if (padding > 0)
            packet.put8(0);
        emit(packet.all(), universe);
        ++universes;
    });
    if (universes < 2)
        return;
    Packet sync = begin(syncOperation);
    sync.put16(0); // two bytes without use
    emit(sync.all(), 0);
}

} // namespace lightbridge
