#include "tests/endToEnd/wallRun.h"
#include "tests/colour/reference.h"

#include <poll.h>

namespace test {

namespace {

constexpr int patience = 10000; // milliseconds

std::string paletteText(const Pixels &screen) {
    return reference::paletteText(reference::paletteOf(samplesOf(screen), 8));
}

} // namespace

void WallRun::TearDown() {
    pollFreely();
    EXPECT_EQ(stopMirror(), 1);
}

void WallRun::start(int mode, const std::vector<LightSetup> &wanted) {
    lights = wanted;
    receivers.clear();
    for (const LightSetup &light : lights)
        receivers.push_back(std::make_unique<LightReceiver>(light.ip, light.port()));
    std::string document = documentOf(displayIDs().at(0), mode, lights);
    ASSERT_EQ(setMirrorConfig(document.data()), 1);
    startedAt = std::time(nullptr);
    ASSERT_EQ(startMirror(), 1);
}

void WallRun::startAtPoll(int mode, const std::vector<LightSetup> &wanted) {
    const Pixels dark = averagingTo({0, 0, 0});
    screen.putPixels(0, 0, screenSide, screenSide, dark.data());
    pause.emplace();
    start(mode, wanted);
    pollAgain();
}

void WallRun::show(const Pixels &pixels) {
    const std::string wanted = paletteText(pixels);
    // draw() waits for the screen's palette, which the screen before may share. While polls are
    // held, a screen with another palette is drawn in between.
    const std::string red = paletteText(plainScreen(0xff0000));
    if (pause)
        draw(plainScreen(wanted == red ? 0x00ff00 : 0xff0000));
    draw(pixels);
    if (pause)
        pollAgain();
}

void WallRun::draw(const Pixels &pixels) {
    screen.putPixels(0, 0, screenSide, screenSide, pixels.data());
    const std::string wanted = paletteText(pixels);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience);
    std::string got(513, '\0');
    do {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << got.c_str() << " not " << wanted;
        poll(nullptr, 0, 1);
        ASSERT_EQ(getPalette(got.data()), 0);
    } while (wanted != got.c_str());
}

std::vector<std::vector<Record>> WallRun::nextFrame() {
    std::vector<std::vector<Record>> frame;
    for (std::size_t d = 0; d < lights.size(); ++d) {
        const auto datagram = receivers[d]->next();
        if (!datagram)
            return {};
        frame.push_back(decode(lights[d].controlVersion, *datagram));
    }
    return frame;
}

void WallRun::expectFrame(std::uint32_t colour) {
    const auto frame = nextFrame();
    ASSERT_EQ(frame.size(), lights.size());
    for (std::size_t d = 0; d < lights.size(); ++d) {
        ASSERT_EQ(frame[d].size(), lights[d].panels.size()) << lights[d].ip;
        for (const Record &record : frame[d]) {
            EXPECT_EQ(record.colour, colour) << lights[d].ip;
            EXPECT_EQ(record.white, 0);
        }
    }
}

void WallRun::expectNothing() {
    for (std::size_t d = 0; d < lights.size(); ++d)
        EXPECT_EQ(receivers[d]->next(std::chrono::milliseconds(0)), std::nullopt) << lights[d].ip;
}

void WallRun::pollAgain() {
    ASSERT_TRUE(pause->awaitNext());
}

std::string WallRun::snapshotText() {
    const int size = getSizeOfStreamFrameJson();
    if (size <= 0)
        return std::to_string(size);
    const std::string guard(64, '\x7e');
    const std::string room(static_cast<std::size_t>(size), ' ');
    std::string bytes = guard + room + guard;
    EXPECT_EQ(getStreamFrameJson(bytes.data() + guard.size()), 0);
    EXPECT_TRUE(bytes.starts_with(guard) && bytes.ends_with(guard));
    return bytes.substr(guard.size(), room.size());
}

std::string WallRun::snapshotOf(const std::vector<std::string> &lines) const {
    std::string text = R"({"numDevices":)" + std::to_string(lights.size()) + R"(,"devices":[)";
    for (std::size_t d = 0; d < lights.size(); ++d)
        text += (d > 0 ? "," : "") + (R"({"ip":")" + lights[d].ip) + R"(","animData":")" +
                (d < lines.size() ? lines[d] : "") + R"("})";
    return text + "]}";
}

std::vector<PanelPlace> panels(int first, int count) {
    std::vector<PanelPlace> all;
    for (int i = 0; i < count; ++i)
        all.push_back({first + i, 50, 50});
    return all;
}

} // namespace test
