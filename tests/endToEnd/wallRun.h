// A run of the library over a small screen, watched at the sockets of its lights.
#pragma once

#include "tests/colour/dominantScreen.h"
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

// Catches what is written to standard output, so that the library's lines can be waited for. What
// nobody has waited for is written out in the end.
class OutputLines {
public:
    OutputLines();
    ~OutputLines();
    OutputLines(const OutputLines &) = delete;
    OutputLines &operator=(const OutputLines &) = delete;

    // Throws away the lines so far, then waits for `count` times this line; false when they take
    // too long.
    bool next(const std::string &line, int count);

private:
    bool read(int patience); // milliseconds
    std::optional<std::string> takeLine();

    int real = -1;
    int pipeEnd = -1;
    std::string pending;
    std::string others;
};

class WallRun : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Configures and starts. `lights` are on 127.0.57.x; listens to each from before the start.
    void start(int mode, const std::vector<LightSetup> &lights);

    // The same for melt and fade mode, over a dark screen, and waits for a poll of it. Who draws
    // right after a poll, or after a datagram, which follows on one, has drawn long before the next
    // poll: a frame that is read while it is written, which may give any colour, is out of the way.
    void startAtPoll(int mode, const std::vector<LightSetup> &lights);

    // Draws a screen and waits until the library's frame is that screen.
    void show(const Pixels &screen);

    // The next datagram of each light, in order, as records. An empty list when one is missing or
    // malformed.
    std::vector<std::vector<Record>> nextFrame();

    // Each light's next datagram must have all its panels in this colour.
    void expectFrame(std::uint32_t colour);

    // No light has been sent anything that was not looked at.
    void expectNothing();

    // Waits for so many more polls of the screen by a run of startAtPoll(), and returns between two
    // polls. Only for a screen that averages: each poll of such a one prints a line.
    bool polledAgain(int polls = 2);

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

    VirtualScreen screen{screenSide, screenSide};
    std::vector<LightSetup> lights;
    std::vector<std::unique_ptr<LightReceiver>> receivers;
    std::time_t startedAt = 0;
    std::optional<OutputLines> output;
};

// `count` panels with identifiers from `first` on, in the middle of the screen.
std::vector<PanelPlace> panels(int first, int count);

} // namespace test
