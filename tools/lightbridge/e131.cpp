#include "tools/lightbridge/packet.h"

namespace lightbridge {

static constexpr char packetIdentifier[] = {'A', 'S', 'C', '-', 'E', '1', '.', '1', '7'};
static constexpr std::size_t headerSize = 126; // up to and including the start code
static constexpr std::size_t dataVector = 4;   // of the root layer
static constexpr std::size_t packetVector = 2; // of the framing layer
static constexpr std::size_t setProperty = 2;  // vector of the DMP layer
static constexpr std::size_t addressType = 0xa1;
static constexpr std::size_t streamTerminated = 0x40;
static constexpr std::size_t leastSlots = 6; // Wireshark takes shorter packets for malformed

void encodeE131(const Stream &stream, const Frame &frame, const Emit &emit) {
    forEachUniverse(stream, frame.data, [&](std::uint16_t universe, Bytes slots) {
        const std::size_t count = std::max(slots.size(), leastSlots);
        const std::size_t size = headerSize + count;
        Packet packet;
        packet.put16(0x0010); // preamble size
        packet.put16(0);      // postamble size
        packet.putText({packetIdentifier, sizeof packetIdentifier}, 12);
        packet.putFlagsAndLength(size);
        packet.put32(dataVector);
        packet.put(stream.senderId);

        packet.putFlagsAndLength(size);
        packet.put32(packetVector);
        packet.putText(stream.senderName, 64);
        packet.put8(stream.priority);
        packet.put16(0); // synchronisation address: none
        packet.put8(frame.number);
        packet.put8(frame.isLast ? streamTerminated : 0);
        packet.put16(universe);

        packet.putFlagsAndLength(size);
        packet.put8(setProperty);
        packet.put8(addressType);
        packet.put16(0); // first address
        packet.put16(1); // increment
        packet.put16(1 + count);
        packet.put8(0); // start code
        packet.put(slots);
        for (std::size_t i = slots.size(); i < count; ++i)
            packet.put8(0);
        emit(packet.all(), universe);
    });
}

} // namespace lightbridge
