// How often a whole wall flashes, in each mode with the library's own delays, when the screen
// alternates black and white: what arrives at a light, at most within a second.
//
//     flashes [SECONDS]    of each rate, in each mode
#include "bench/measure.h"
#include "bench/scene.h"
#include "mirror/mirrorInterface.h"
#include "mirror/screenMirrorMac.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"
#include "tools/panelwall/flashMeter.h"

#include <atomic>
#include <cstdio>
#include <thread>

namespace {

constexpr bench::ScreenSize size{"640 x 360", 640, 360};
constexpr int panels = 40;
constexpr char address[] = "127.77.0.3";
constexpr int port = 60222;

// On average over all panels of a wide datagram.
double luminanceOf(const test::Datagram &datagram) {
    double sum = 0;
    for (std::size_t at = 2; at + 8 <= datagram.size(); at += 8)
        sum += panelwall::relativeLuminance({datagram[at + 2], datagram[at + 3], datagram[at + 4]});
    return sum / panels;
}

// Draws black and white in turns, as long as it lives.
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

double mostFlashes(int mode, double flashesPerSecond, double seconds) {
    test::VirtualScreen screen(size.width, size.height);
    screen.use();
    test::LightReceiver light(address, port);
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    CGGetActiveDisplayList(1, &display, &count);
    std::string document = bench::configuration(display, size, mode, panels, 1, address);
    if (setMirrorConfig(document.data()) != 1 || startMirror() != 1)
        std::exit(1);
    panelwall::FlashMeter meter;
    {
        const Flasher flasher(screen, flashesPerSecond);
        const auto begin = bench::Clock::now();
        while (bench::Clock::now() - begin < std::chrono::duration<double>(seconds))
            if (const auto datagram = light.next(std::chrono::milliseconds(50)))
                meter.note(luminanceOf(*datagram), bench::Clock::now());
    }
    stopMirror();
    return meter.most();
}

} // namespace

int main(int argc, char **argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 5;
    std::puts("Flashes of the whole wall, the most within any second.\n");
    std::puts("| the screen's flashes a second | match | melt | fade | palette |");
    std::puts("|---|---|---|---|---|");
    for (const double flashes : {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0, 10.0, 12.0, 15.0, 20.0}) {
        std::printf("| %.0f |", flashes);
        for (int mode = 0; mode < 4; ++mode) {
            std::printf(" %.1f |", mostFlashes(mode, flashes, seconds));
            std::fflush(stdout);
        }
        std::puts("");
    }
}
