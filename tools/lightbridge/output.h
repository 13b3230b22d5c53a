// One output: a receiver, or some of its pixels, that is sent the colours of a device's panels.
#pragma once

#include "tools/config/outputs.h"
#include "tools/lightbridge/encoders.h"
#include "tools/lightbridge/pixels.h"
#include "tools/lights/address.h"
#include "tools/wall/clock.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace lightbridge {

using panelwall::Clock;

// Who sends: E1.31 receivers tell senders apart by the number.
struct Sender {
    SenderId id{};
    std::string name;
};

// The same in every run on this machine with this text.
Sender senderFor(const std::string &text);

// Owns a socket. Sending never waits: what the system does not accept at once is dropped, since the
// next frame replaces it. One thread at a time.
class Output {
public:
    // The entry must be one without problems.
    Output(const config::OutputEntry &entry, const Sender &sender);
    ~Output();
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    // Sends the panels' colours, smoothed, unless the receiver was sent the same less than
    // `repeatInterval` ago. Called at most as often as the receiver is to be sent frames.
    void show(std::span<const Colour> panels, Clock::time_point now);

    // Sends the panels' colours without smoothing, as the last frame or one of those before it.
    void finish(std::span<const Colour> panels, bool isLast, Clock::time_point now);

    // When the last colours are to be repeated. Receivers give up after two seconds or more.
    static constexpr std::chrono::milliseconds repeatInterval{900};
    Clock::time_point repeatDue() const { return lastSent + repeatInterval; }

    // Whether smoothing still has to change what is shown.
    bool isSmoothing() const { return smoothing; }

    // What has changed since the last call: that the receiver cannot be reached, and why, or that
    // it can be reached again. Empty if nothing has.
    std::string news(Clock::time_point now);

    std::uint64_t frames() const { return frameCount; }
    std::uint64_t packets() const { return packetCount; }
    std::uint64_t failures() const { return failureCount; } // packets that could not be sent

private:
    void smooth(std::span<const Colour> panels, Clock::time_point now);
    void transmit(bool isLast, Clock::time_point now);
    void sendPacket(Bytes packet, std::uint16_t universe, Clock::time_point now);

    // Returns 0, or the error. It is tried again with the next packet.
    int open();
    void close();

    PixelFormat format;
    Stream stream;
    config::Protocol protocol;
    bool multicast;
    std::string interface;
    std::optional<lights::Endpoint> receiver; // none for multicast
    int port;
    int fd = -1;

    std::chrono::duration<double> timeConstant; // of smoothing
    std::vector<std::array<double, 3>> smoothed;
    bool smoothing = false;
    Clock::time_point lastShown;

    std::vector<std::uint8_t> data; // of the frame in the making
    std::vector<std::uint8_t> sent; // of the last frame
    Clock::time_point lastSent;

    std::uint64_t frameCount = 0;
    std::uint64_t packetCount = 0;
    std::uint64_t failureCount = 0;
    int lastError = 0;
    std::optional<Clock::time_point> lastFailure;
    bool failureTold = false;
};

} // namespace lightbridge
