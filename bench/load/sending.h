// What a sender under load and those who listen to it keep in common, in memory that both see.
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

inline constexpr int mostDevices = 4000;
inline constexpr int largestDatagram = 4096;
inline constexpr int port = 60222;

// Each device has an address of its own on loopback.
inline std::string addressOf(int device) {
    return "127.90." + std::to_string(device / 250) + "." + std::to_string(device % 250 + 1);
}
inline int deviceAt(in_addr address) {
    const std::uint32_t number = ntohl(address.s_addr);
    return static_cast<int>((number >> 8 & 0xff) * 250 + (number & 0xff)) - 1;
}

// Datagrams and their order, in one number: what was sent and what came are the same when these
// are.
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
struct Sending {
    std::atomic<bool> begun{false}; // by the sender
    std::atomic<bool> stop{false};  // asks the sender to end,
    sem_t stopped;                  // and wakes it
    // Processor time of the thread that sends, in nanoseconds.
    std::atomic<std::int64_t> threadTime{0};
    int devices = 0;
    SentTo to[mostDevices];
};

// Memory for it that children share. Lasts as long as the process.
Sending &makeSending(int devices);

// From now on every datagram of this process to a device is noted there.
void noteIn(Sending &sending);

} // namespace load
