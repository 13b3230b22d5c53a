// Counts how often a whole wall flashes in each mode, with the library's own delays, when the
// screen alternates between black and white: the most flashes that reach a light within a second.
//
//     flashes [SECONDS]    per rate and mode; four times as long in palette mode, which is slow
#include "bench/measure.h"
#include "bench/scene.h"
#include "mirror/mirrorInterface.h"
#include "mirror/screenMirrorMac.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"
#include "tools/wall/flashMeter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <numeric>
#include <thread>

namespace {

constexpr bench::ScreenSize size{"640 x 360", 640, 360};
constexpr int panels = 40;
constexpr char address[] = "127.77.0.3";
constexpr int port = 60222;

struct Flashes {
    double wall = 0;  // by the average over all panels
    double panel = 0; // of the panel that flashed most
};

// What a light shows, panel by panel. A datagram may contain only some of the panels.
class Meters {
public:
    void note(const test::Datagram &datagram) {
        const auto now = bench::Clock::now();
        for (std::size_t at = 2; at + 8 <= datagram.size(); at += 8) {
            const std::size_t p = datagram[at] * 256u + datagram[at + 1] - 1; // identifiers from 1
            shown.at(p) = panelwall::relativeLuminance(
                {datagram[at + 2], datagram[at + 3], datagram[at + 4]});
            panel[p].note(shown[p], now);
        }
        wall.note(std::accumulate(shown.begin(), shown.end(), 0.0) / panels, now);
    }

    Flashes most() const {
        Flashes result{wall.most(), 0};
        for (const panelwall::FlashMeter &meter : panel)
            result.panel = std::max(result.panel, meter.most());
        return result;
    }

private:
    panelwall::FlashMeter wall;
    std::array<panelwall::FlashMeter, panels> panel;
    std::array<double, panels> shown{};
};

// Draws black and white in turns until it is destroyed.
class Flasher {
public:
    Flasher(test::VirtualScreen &screen, double flashesPerSecond)
        : thread([this, &screen, flashesPerSecond] {
              bench::Pace pace(
                  std::chrono::microseconds(static_cast<long>(500'000 / flashesPerSecond)));
              for (bool white = true; !done; white = !white) {
                  screen.fill(white ? 0xffffff : 0x000000);
                  pace.wait();
              }
          }) {}
    ~Flasher() {
        done = true;
        thread.join();
    }
    Flasher(const Flasher &) = delete;
    Flasher &operator=(const Flasher &) = delete;

private:
    std::atomic<bool> done = false;
    std::thread thread;
};

Flashes maxFlashes(int mode, double flashesPerSecond, double seconds) {
    test::VirtualScreen screen(size.width, size.height);
    screen.use();
    test::LightReceiver light(address, port);
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    CGGetActiveDisplayList(1, &display, &count);
    std::string document = bench::configuration(display, size, mode, panels, 1, address);
    if (setMirrorConfig(document.data()) != 1 || startMirror() != 1)
        std::exit(1);
    Meters meters;
    {
        const Flasher flasher(screen, flashesPerSecond);
        const auto begin = bench::Clock::now();
        while (bench::Clock::now() - begin < std::chrono::duration<double>(seconds))
            if (const auto datagram = light.next(std::chrono::milliseconds(50)))
                meters.note(*datagram);
    }
    stopMirror();
    return meters.most();
}

} // namespace

int main(int argc, char **argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 5;
    std::puts(
        "The most flashes within any second: of the whole wall, and of the panel that flashed "
        "most.\n");
    std::puts("| the screen's flashes a second | match | melt | fade | palette |");
    std::puts("|---|---|---|---|---|");
    for (const double rate : {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0, 10.0, 12.0, 15.0, 20.0}) {
        std::printf("| %.0f |", rate);
        for (int mode = 0; mode < 4; ++mode) {
            const Flashes flashes = maxFlashes(mode, rate, mode == 3 ? 4 * seconds : seconds);
            std::printf(" %.1f, %.1f |", flashes.wall, flashes.panel);
            std::fflush(stdout);
        }
        std::puts("");
    }
}
