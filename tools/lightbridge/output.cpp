#include "tools/lightbridge/output.h"

#include "tools/lights/text.h"

#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace lightbridge {

// A receiver that is off the network is noticed in every frame, or every three seconds while the
// system looks for it.
static constexpr std::chrono::seconds reachedAgainAfter{5};

// A pause between frames does not make the next step of smoothing larger than this.
static constexpr std::chrono::milliseconds longestStep{20};

// Two independent hashes (FNV-1a) of the text as a UUID of version 8, which is for such purposes.
Sender senderFor(const std::string &text) {
    Sender sender;
    std::uint64_t hashes[] = {0xcbf29ce484222325, 0x9ae16a3b2f90404f};
    for (std::size_t i = 0; i < sender.id.size(); ++i) {
        std::uint64_t &hash = hashes[i / 8];
        if (i % 8 == 0)
            for (const char c : text)
                hash = (hash ^ static_cast<std::uint8_t>(c)) * 0x100000001b3;
        sender.id[i] = static_cast<std::uint8_t>(hash >> (8 * (i % 8)));
    }
    sender.id[6] = static_cast<std::uint8_t>(0x80 | (sender.id[6] & 0x0f));
    sender.id[8] = static_cast<std::uint8_t>(0x80 | (sender.id[8] & 0x3f));
    return sender;
}

Output::Output(const config::OutputEntry &entry, const Sender &sender)
    : format(entry), protocol(entry.protocol), multicast(entry.isMulticast()),
      interface(entry.interface), port(entry.port),
      timeConstant(std::chrono::milliseconds(entry.smoothing)) {
    if (!multicast)
        receiver = lights::parseEndpoint(entry.ip, entry.port);
    stream.firstPixel = static_cast<std::size_t>(entry.firstPixel);
    stream.channels = entry.channels();
    stream.universe = static_cast<std::uint16_t>(entry.universe);
    stream.priority = static_cast<std::uint8_t>(entry.priority);
    stream.senderId = sender.id;
    stream.senderName = sender.name;
}

Output::~Output() {
    close();
}

void Output::show(std::span<const Colour> panels, Clock::time_point now) {
    data.clear();
    smoothing = false;
    if (timeConstant.count() > 0.0) {
        smooth(panels, now);
    } else {
        for (const Colour &colour : panels)
            format.append(colour, data);
    }
    if (data != sent || now >= repeatDue())
        transmit(false, now);
}

void Output::smooth(std::span<const Colour> panels, Clock::time_point now) {
    const std::chrono::duration<double> step =
        std::min<Clock::duration>(now - lastShown, longestStep);
    const double share = 1.0 - std::exp(-step / timeConstant);
    lastShown = now;
    smoothed.resize(panels.size());
    for (std::size_t i = 0; i < panels.size(); ++i) {
        const std::array<std::uint8_t, 3> target = {panels[i].red, panels[i].green, panels[i].blue};
        std::array<std::uint8_t, 3> shown;
        for (std::size_t c = 0; c < target.size(); ++c) {
            double &value = smoothed[i][c];
            value += (target[c] - value) * share;
            if (std::abs(target[c] - value) < 0.5)
                value = target[c];
            else
                smoothing = true;
            shown[c] = static_cast<std::uint8_t>(std::lround(value));
        }
        format.append({shown[0], shown[1], shown[2]}, data);
    }
}

void Output::finish(std::span<const Colour> panels, bool isLast, Clock::time_point now) {
    data.clear();
    for (const Colour &colour : panels)
        format.append(colour, data);
    smoothed.clear();
    transmit(isLast, now);
}

void Output::transmit(bool isLast, Clock::time_point now) {
    const auto emit = [&](Bytes packet, std::uint16_t universe) {
        sendPacket(packet, universe, now);
    };
    const Frame frame{frameCount++, data, isLast};
    switch (protocol) {
    case config::Protocol::Ddp:
        encodeDdp(stream, frame, emit);
        break;
    case config::Protocol::E131:
        encodeE131(stream, frame, emit);
        break;
    case config::Protocol::ArtNet:
        encodeArtNet(stream, frame, emit);
        break;
    case config::Protocol::Wled:
        encodeWled(stream, frame, emit);
        break;
    }
    std::swap(data, sent);
    lastSent = now;
}

void Output::sendPacket(Bytes packet, std::uint16_t universe, Clock::time_point now) {
    ++packetCount;
    lights::Endpoint group;
    if (multicast) {
        group.v4.sin_family = AF_INET;
        group.v4.sin_port = htons(static_cast<in_port_t>(port));
        group.v4.sin_addr.s_addr = htonl(239u << 24 | 255u << 16 | universe);
        group.length = sizeof group.v4;
    }
    // The first attempt may report the fate of an earlier packet instead.
    for (int attempt = 0; attempt < 2; ++attempt) {
        int error = fd < 0 ? open() : 0;
        if (error == 0 && sendto(fd, packet.data(), packet.size(), MSG_DONTWAIT,
                                 multicast ? &group.any : nullptr, group.length) >= 0)
            return;
        error = error == 0 ? errno : error;
        if (error == EAGAIN || error == ENOBUFS)
            break;
        lastError = error;
        lastFailure = now;
        close(); // a new socket forgets addresses that this machine no longer has
    }
    ++failureCount;
}

int Output::open() {
    fd = socket(multicast ? AF_INET : receiver->any.sa_family, SOCK_DGRAM, 0);
    if (fd < 0)
        return errno;
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    int status = 0;
    if (!multicast) {
        status = connect(fd, &receiver->any, receiver->length);
    } else if (!interface.empty()) {
        const in_addr address = lights::parseEndpoint(interface, 0)->v4.sin_addr;
        status = setsockopt(fd, IPPROTO_IP, IP_MULTICAST_IF, &address, sizeof address);
    }
    const int error = status == 0 ? 0 : errno;
    if (error != 0)
        close();
    return error;
}

void Output::close() {
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

std::string Output::news(Clock::time_point now) {
    if (!lastFailure)
        return {};
    if (!failureTold) {
        failureTold = true;
        return "cannot be reached: " + std::generic_category().message(lastError) +
               "; check its address and that it is switched on; each frame is tried again";
    }
    if (now - *lastFailure < reachedAgainAfter)
        return {};
    lastFailure.reset();
    failureTold = false;
    return "can be reached again";
}

} // namespace lightbridge
