// State in memory that is shared by a sender under load and its receivers.
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>
#include <netinet/in.h>
#include <semaphore.h>
#include <string>

namespace load {

inline constexpr int maxDevices = 4000;
inline constexpr int largestDatagram = 4096;
inline constexpr int port = 60222;

// Each device has its own loopback address.
inline std::string addressOf(int device) {
    return "127.90." + std::to_string(device / 250) + "." + std::to_string(device % 250 + 1);
}
inline int deviceAt(in_addr address) {
    const std::uint32_t number = ntohl(address.s_addr);
    return static_cast<int>((number >> 8 & 0xff) * 250 + (number & 0xff)) - 1;
}

// A checksum of datagrams and their order: equal checksums mean that the datagrams received are
// those sent, in the same order.
inline std::uint64_t chain(std::uint64_t before, const void *bytes, std::size_t length) {
    const auto *at = static_cast<const unsigned char *>(bytes);
    std::uint64_t sum = before ^ length;
    for (std::size_t i = 0; i < length; i += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, at + i, std::min(sizeof word, length - i));
        sum = std::rotl((sum ^ word) * 0x9e3779b97f4a7c15u, 29);
    }
    return sum;
}

struct SentTo {
    std::atomic<std::uint64_t> tried{0};
    std::atomic<std::uint64_t> refused{0}; // by the system
    std::atomic<std::uint64_t> chain{0};   // of those that were not refused
    std::uint32_t length = 0;              // of the first
    unsigned char first[largestDatagram];
};

// All zero at first.
struct SharedSendState {
    std::atomic<bool> begun{false}; // set by the sender
    std::atomic<bool> stop{false};  // asks the sender to end,
    sem_t stopped;                  // and wakes it
    // Processor time of the thread that sends, in nanoseconds.
    std::atomic<std::int64_t> threadTime{0};
    int devices = 0;
    SentTo to[maxDevices];
};

// Allocates one in memory shared with child processes. It is never freed.
SharedSendState &makeSharedSendState(int devices);

// From now on, every datagram that this process sends to a device is recorded in `state`.
void recordSendsTo(SharedSendState &state);

} // namespace load
