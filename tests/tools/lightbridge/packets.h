// Packets as texts and the other way round, for tests of the encoders.
#pragma once

#include "tests/support/lightReceiver.h"
#include "tools/lightbridge/encoders.h"

#include <sstream>
#include <string>
#include <vector>

namespace test {

// The bytes of a text such as "41 01 0b".
inline Datagram bytes(const std::string &text) {
    Datagram all;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        all.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
    return all;
}

// Bytes 1, 2, 3 and so on, but never 0.
inline Datagram counting(std::size_t size) {
    Datagram all;
    for (std::size_t i = 0; i < size; ++i)
        all.push_back(static_cast<std::uint8_t>(1 + i % 255));
    return all;
}

inline Datagram operator+(Datagram first, const Datagram &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The bytes from `begin` on, `size` of them.
inline Datagram part(const Datagram &all, std::size_t begin, std::size_t size) {
    const auto from = all.begin() + static_cast<std::ptrdiff_t>(begin);
    return {from, from + static_cast<std::ptrdiff_t>(size)};
}

struct EmittedPacket {
    Datagram bytes;
    int universe = 0;
};

using Encode = void (*)(const lightbridge::Stream &, const lightbridge::Frame &,
                        const lightbridge::Emit &);

inline std::vector<EmittedPacket> encoded(Encode encode, const lightbridge::Stream &stream,
                                          const Datagram &data, std::uint64_t number = 0,
                                          bool isLast = false) {
    std::vector<EmittedPacket> packets;
    encode(stream, {number, data, isLast}, [&](lightbridge::Bytes packet, std::uint16_t universe) {
        packets.push_back({{packet.begin(), packet.end()}, universe});
    });
    return packets;
}

} // namespace test
