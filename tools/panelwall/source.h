// Where a session's datagrams come from.
#pragma once

#include "tools/panelwall/player.h"
#include "tools/wall/receiver.h"

#include <poll.h>

namespace panelwall {

// The wall's receiver, or a recording that is played back. Owns neither; they outlive it.
class Source {
public:
    explicit Source(Receiver &receiver_) : receiver(&receiver_) {}
    explicit Source(Player &player_) : player(&player_) {}

    bool isRecording() const { return player != nullptr; }

    // What to wait for.
    void appendTo(std::vector<pollfd> &waiting) const {
        if (receiver != nullptr)
            for (const int fd : receiver->fds())
                waiting.push_back({fd, POLLIN, 0});
    }

    // The latest time to call readAll(), though nothing that was waited for has happened.
    Clock::time_point due() const {
        return player != nullptr ? player->due() : Clock::time_point::max();
    }

    // Hands over everything that has come, and does not wait for more. True when anything came.
    bool readAll(const Receiver::Handler &handler) {
        return player != nullptr ? player->playDue(handler) : receiver->readAll(handler);
    }

    // Whether nothing more will ever come.
    bool ended() const { return player != nullptr && player->ended(); }

private:
    Receiver *receiver = nullptr;
    Player *player = nullptr;
};

} // namespace panelwall
