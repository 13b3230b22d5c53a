// What lightbridge sends is what panelwall shows at the same moment, for a recording of each mode.
#include "tests/support/virtualScreen.h"
#include "tests/tools/lightbridge/bridgeSetup.h"
#include "tests/tools/lightbridge/ddpReader.h"
#include "tools/wall/wall.h"

#include <deque>
#include <random>

using namespace std::chrono_literals;
using namespace test;
using panelwall::Clock;

namespace {

struct TimedDatagram {
    Clock::duration time; // since the first
    Datagram bytes;
};
using Recording = std::vector<TimedDatagram>;

// A wall like panelwall's, which follows lightbridge's packets from moment to moment.
class Follower {
public:
    explicit Follower(const config::Document &document) : wall(document) {}

    void send(const std::string &ip, const Datagram &datagram) {
        const auto before = Clock::now();
        sendTo(ip, 60222, datagram);
        uncertainty = std::max(uncertainty, Clock::now() - before);
        sent.emplace_back(before, datagram);
    }

    // Whether the wall shows these pixels at a moment between the one found last and now.
    bool finds(const Datagram &pixels) {
        for (const auto now = Clock::now();; moment = std::min(moment + 100us, now)) {
            for (; !sent.empty() && sent.front().first <= moment; sent.pop_front())
                wall.receive(0, sent.front().second, sent.front().first);
            if (differenceTo(pixels, moment) <= tolerance())
                return true;
            if (moment == now)
                return false;
        }
    }

    // Whether it shows exactly these pixels and goes on doing so.
    bool restsAt(const Datagram &pixels) const {
        const auto now = Clock::now();
        return sent.empty() && !wall.isMoving(now) && differenceTo(pixels, now) == 0;
    }

private:
    // The most that a channel differs by.
    int differenceTo(const Datagram &pixels, Clock::time_point time) const {
        int most = 0;
        std::size_t next = 0;
        for (const panelwall::WallPanel &panel : wall.devices()[0].panels) {
            const auto colour = panel.shownAt(time).value_or(lights::Colour{});
            for (const int channel : {colour.red, colour.green, colour.blue})
                most = std::max(most, std::abs(channel - pixels.at(next++)));
        }
        return most;
    }

    // Steps of a channel: for rounding, and for how long sending has taken at most, in which time
    // the datagram arrived. The shortest transition of any mode takes 100 ms.
    double tolerance() const {
        return 1.0 + 255.0 * std::chrono::duration<double>(uncertainty).count() / 0.1;
    }

    panelwall::Wall wall;
    std::deque<std::pair<Clock::time_point, Datagram>> sent; // not received by the wall yet
    Clock::time_point moment = Clock::now();
    Clock::duration uncertainty{};
};

class LightbridgeComparison : public BridgeTest {
protected:
    static constexpr int panels = 8;
    const std::string ip = "127.0.47.50";

    // What the library sends to the device meanwhile, on a screen that changes all the time.
    Recording record(const std::string &config, Clock::duration length) {
        LightReceiver device(ip, 60222);
        Process host({MIRRORCTL_PROGRAM, "run", config});
        std::mt19937 random(5);
        Recording recording;
        LightReceiver::Arrival first;
        while (recording.empty() || recording.back().time < length) {
            for (int i = 0; i < panels; ++i)
                screen.fillRect(i % 4 * 160, i / 4 * 240, 160, 240,
                                static_cast<std::uint32_t>(random()) & 0xffffff);
            const auto datagram = device.next(50ms);
            if (!datagram)
                continue;
            if (recording.empty())
                first = device.arrival();
            recording.push_back({device.arrival() - first, *datagram});
        }
        end(host, SIGINT);
        return recording;
    }

    // Sends the recording to lightbridge, and compares each packet of `light`.
    void replay(const std::string &config, const Recording &recording, LightReceiver &light) {
        Process bridge = start({config, "--no-flash-limit"});
        bridge.waitFor("driving: ");
        Follower wall(config::readText(fileText(config)).document);
        DdpReader reader;
        Datagram pixels;
        std::size_t packets = 0;
        const auto begin = Clock::now();
        auto next = recording.begin();
        while (next != recording.end() || !wall.restsAt(pixels)) {
            const auto due = next == recording.end() ? Clock::now() + 10s : begin + next->time;
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
            if (left <= 0ms) {
                wall.send(ip, (next++)->bytes);
                continue;
            }
            const auto packet = light.next(left);
            if (!packet) {
                ASSERT_NE(next, recording.end()) << "the last colours do not come";
                continue;
            }
            const auto reading = reader.read(*packet);
            ASSERT_TRUE(reading.frame) << reading.malformed;
            pixels = reading.frame->bytes;
            ASSERT_TRUE(wall.finds(pixels)) << "packet " << packets;
            ++packets;
        }
        EXPECT_GT(packets, 10u);
        end(bridge);
    }

    VirtualScreen screen{640, 480};
};

} // namespace

TEST_F(LightbridgeComparison, SendsWhatPanelwallShowsInEachMode) {
    screen.use();
    for (const auto &[mode, length] :
         {std::pair("match", 1500ms), {"melt", 1500ms}, {"fade", 1500ms}, {"palette", 3000ms}}) {
        SCOPED_TRACE(mode);
        LightReceiver light("127.0.47.1", 0);
        const ProcessResult layout =
            Process({MIRRORCTL_PROGRAM, "layout", "2x4", "--mode", mode, "--bridge",
                     "ddp://127.0.47.1:" + std::to_string(light.port())})
                .finish();
        ASSERT_EQ(layout.status, 0) << layout.err;
        std::string text = layout.out;
        text.replace(text.find("127.0.0.1"), 9, ip);
        const std::string config = folder.write("wall.json", text);
        replay(config, record(config, length), light);
    }
}
