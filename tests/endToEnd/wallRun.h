// A run of the library over a small screen, watched at the sockets of its lights.
#pragma once

#include "tests/colour/dominantScreen.h"
#include "tests/endToEnd/heldSleep.h"
#include "tests/endToEnd/lightSetup.h"
#include "tests/support/panelRecords.h"
#include "tests/support/virtualScreen.h"

#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace test {

class WallRun : public testing::Test {
protected:
    void TearDown() override;

    // Configures and starts. `lights` are on 127.0.57.x; listens to each from before the start.
    void start(int mode, const std::vector<LightSetup> &lights);

    // The same for melt and fade mode, over a dark screen, which is polled once. From then on the
    // test says when the screen is polled: a frame that is read while it is written may give any
    // colour.
    void startAtPoll(int mode, const std::vector<LightSetup> &lights);

    // Draws a screen and waits until the library's frame has its palette; after startAtPoll(),
    // until that screen has been polled once.
    void show(const Pixels &screen);

    // Polls once more; only after startAtPoll().
    void pollAgain();

    // From here on, the screen is polled as often as the mode wants.
    void pollFreely() { pause.reset(); }

    // The next datagram of each light, in order, as records. An empty list when one is missing or
    // malformed.
    std::vector<std::vector<Record>> nextFrame();

    // Each light's next datagram must have all its panels in this colour.
    void expectFrame(std::uint32_t colour);

    // No light has been sent anything that was not looked at.
    void expectNothing();

    // The JSON text of the frames captured last, fetched into a buffer of exactly its size.
    static std::string snapshotText();
    // The same text as it has to be for these lines, one a light.
    std::string snapshotOf(const std::vector<std::string> &lines) const;

    // The first of the possible seeds of this run for which `explains` holds.
    template <class Explains> std::optional<unsigned> seedThat(Explains explains) const {
        for (std::time_t seed = startedAt; seed <= std::time(nullptr); ++seed)
            if (explains(static_cast<unsigned>(seed)))
                return static_cast<unsigned>(seed);
        return std::nullopt;
    }

    UsedScreen screen{screenSide, screenSide};
    std::vector<LightSetup> lights;
    std::vector<std::unique_ptr<LightReceiver>> receivers;
    std::time_t startedAt = 0;
    std::optional<HeldSleep> pause; // between two polls

private:
    void draw(const Pixels &pixels);
};

// `count` panels with identifiers from `first` on, in the middle of the screen.
std::vector<PanelPlace> panels(int first, int count);

} // namespace test
