// Shared by melt and fade mode, which follow the screen's dominant colour and send only when it has
// changed noticeably. Mirroring thread.
#pragma once

#include "mirror/frameLoop.h"

#include <cstdlib>

// True if any channel drops to 0, however small the step, or differs by more than 4.
inline bool differsNoticeably(RGB from, RGB to) {
    const auto channelDiffers = [](int a, int b) {
        return (a != 0 && b == 0) || std::abs(a - b) > 4;
    };
    return channelDiffers(from.r, to.r) || channelDiffers(from.g, to.g) ||
           channelDiffers(from.b, to.b);
}

// The colour sent last. It starts as black, so a dark screen sends no first frame.
struct DominantCycle {
    RGB sent;

    Cycle next(MirrorManager &manager) {
        const RGB colour = manager.getDominantScreenColour();
        if (!differsNoticeably(sent, colour))
            return Cycle::Hold;
        sent = colour;
        return Cycle::Send;
    }
};
