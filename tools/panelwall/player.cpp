#include "tools/panelwall/player.h"

#include <algorithm>
#include <thread>

namespace panelwall {

// So many are played before signals and the drawing get their turn.
static constexpr int datagramsPerTurn = 4096;

// Waiting together with everything else is exact to a millisecond; the rest is waited for here.
static constexpr std::chrono::microseconds lastMoment{1500};

// Slow enough a replay would leave the clock's range.
static constexpr std::chrono::hours longestReplay{24 * 365 * 100};

Player::Player(RecordingReader &reader_, double speed_, Sender *sender_)
    : reader(reader_), speed(speed_), sender(sender_) {
    readNext();
}

void Player::readNext() {
    more = reader.next(upcoming);
}

Clock::time_point Player::momentOf(std::chrono::microseconds time) const {
    const std::chrono::duration<double, std::micro> scaled(static_cast<double>(time.count()) /
                                                           speed);
    if (scaled > longestReplay)
        return begin + longestReplay;
    return begin + std::chrono::duration_cast<Clock::duration>(scaled);
}

Clock::time_point Player::due() const {
    if (!begun)
        return {};
    if (more)
        return momentOf(upcoming.time) - lastMoment;
    return over ? Clock::time_point::max() : momentOf(reader.end());
}

bool Player::playDue(const Receiver::Handler &handler) {
    if (!begun) {
        begun = true;
        begin = Clock::now();
    }
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
        readNext();
    }
    over = !more && (!reader.error().empty() || Clock::now() >= momentOf(reader.end()));
    return any;
}

} // namespace panelwall
