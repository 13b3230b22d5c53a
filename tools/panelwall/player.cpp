#include "tools/panelwall/player.h"

#include "tools/lights/text.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace panelwall {

// At most this many are played before signals and drawing get their turn.
static constexpr int datagramsPerTurn = 4096;

// The session's poll is accurate only to a millisecond, so the player sleeps for the rest itself.
static constexpr std::chrono::microseconds lastMoment{1500};

// A very slow replay would exceed the clock's range.
static constexpr std::chrono::hours longestReplay{24 * 365 * 100};

Sender::~Sender() {
    for (const auto &[family, fd] : sockets)
        close(fd);
}

std::string Sender::open(std::vector<Endpoint> endpoints_) {
    endpoints = std::move(endpoints_);
    for (const Endpoint &endpoint : endpoints) {
        const int family = endpoint.address.ss_family;
        if (sockets.contains(family))
            continue;
        const int fd = socket(family, SOCK_DGRAM, 0);
        if (fd < 0)
            return std::generic_category().message(errno);
        fcntl(fd, F_SETFD, FD_CLOEXEC);
        sockets.emplace(family, fd);
    }
    return {};
}

void Sender::send(std::size_t device, std::span<const std::uint8_t> bytes) {
    const Endpoint &endpoint = endpoints.at(device);
    ssize_t size;
    do
        size = sendto(sockets.at(endpoint.address.ss_family), bytes.data(), bytes.size(), 0,
                      &endpoint.any, endpoint.length);
    while (size < 0 && errno == EINTR);
    if (size >= 0) {
        ++sent;
        return;
    }
    ++failed;
    lastFailure = std::generic_category().message(errno);
}

std::string Sender::report() const {
    std::string text = "sent: " + lights::counted(sent, "datagram");
    if (failed > 0)
        text += "; " + std::to_string(failed) +
                " could not be sent, the last of them because: " + lastFailure;
    return text;
}

Player::Player(RecordingReader &reader_, double speed_, Sender *sender_)
    : reader(reader_), speed(speed_), sender(sender_), more(reader.next(upcoming)) {}

Clock::time_point Player::momentOf(std::chrono::microseconds time) const {
    const std::chrono::duration<double, std::micro> scaled(static_cast<double>(time.count()) /
                                                           speed);
    if (scaled > longestReplay)
        return *begin + longestReplay;
    return *begin + std::chrono::duration_cast<Clock::duration>(scaled);
}

Clock::time_point Player::due() const {
    if (!begin)
        return {};
    if (more)
        return momentOf(upcoming.time) - lastMoment;
    return over ? Clock::time_point::max() : momentOf(reader.time());
}

bool Player::playDue(const Receiver::Handler &handler) {
    if (!begin)
        begin = Clock::now();
    bool any = false;
    for (int turn = 0; more && turn < datagramsPerTurn; ++turn) {
        const auto moment = momentOf(upcoming.time);
        const auto now = Clock::now();
        if (moment > now + lastMoment)
            break;
        if (moment > now)
            std::this_thread::sleep_until(moment);
        if (sender != nullptr)
            sender->send(upcoming.device, upcoming.bytes);
        handler(upcoming.device, upcoming.bytes, Clock::now());
        any = true;
        more = reader.next(upcoming);
    }
    over = !more && (!reader.error().empty() || Clock::now() >= momentOf(reader.time()));
    return any;
}

} // namespace panelwall
