// Measures a second of mirroring a moving 1080p screen in each mode, compared with its bare parts:
// reading the screen, copying the frame, reading the sample pixels, sending as many datagrams. Uses
// ten panels on one device; counts the program's processor time and what it adds to the display
// server's.
//
//     mirroring [ROUNDS [SECONDS]]
#include "bench/bareScreen.h"
#include "bench/frameCount.h"
#include "bench/measure.h"
#include "bench/screenLoad.h"
#include "mirror/mirrorInterface.h"
#include "mirror/screenMirrorMac.h"
#include "tests/support/lightReceiver.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>

namespace {

constexpr bench::ScreenSize size = bench::screenSizes[0];
constexpr char address[] = "127.77.0.2";
constexpr int port = 60222;

void configure(int mode) {
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    CGGetActiveDisplayList(1, &display, &count);
    std::string document = bench::configuration(display, size, mode, 10, 1, address);
    if (setMirrorConfig(document.data()) != 1)
        std::exit(1);
}

void mirror(int mode, std::atomic<long> &frames) {
    bench::countFrames(frames);
    configure(mode);
    startMirror();
}

// Does only the necessary work, at the same pace and on two threads as in the library. Uses the
// library's devices and sample pixels.
void bareParts(int mode, std::chrono::milliseconds delay, std::atomic<long> &frames) {
    configure(mode);
    mirrorManager.setScreenSamplePixels();
    std::thread([&frames] {
        bench::BareScreen screen(size);
        bench::Pace pace(std::chrono::nanoseconds(1'000'000'000 / bench::framesPerSecond));
        for (;;) {
            pace.wait();
            screen.read();
            std::memcpy(mirrorManager.frameBuffer, screen.pixels(), size.bytes());
            ++frames;
        }
    }).detach();
    std::thread([mode, delay] {
        UdpSocket socket;
        socket.setRemote(address, port);
        char datagram[2 + 8 * 10] = {};
        const auto *pixels = reinterpret_cast<const std::uint32_t *>(mirrorManager.frameBuffer);
        for (;;) {
            std::uint32_t sum = 0;
            if (mode == 0)
                for (const Panel &panel : mirrorManager.devices[0].panels)
                    for (const std::int32_t index : panel.samplePixels)
                        sum += pixels[index];
            else
                for (const std::int32_t index : mirrorManager.samplePixels)
                    sum += pixels[index];
            bench::escape(sum);
            socket.send(datagram, sizeof datagram);
            bench::sleepUntil(bench::Clock::now() + delay);
        }
    }).detach();
}

} // namespace

int main(int argc, char **argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 3;
    const double seconds = argc > 2 ? std::atof(argv[2]) : 2;
    test::VirtualScreen screen(size.width, size.height);
    const test::LightReceiver light(address, port);
    std::puts("Mirroring a wholly moving 1080p screen, per cent of a processor (program and "
              "display server, the drawing taken off; median); the ratio is that of the cost per "
              "frame.\n");
    std::puts("| mode | bare parts % | frames/s | mirroring % | frames/s | ratio |");
    std::puts("|---|---|---|---|---|---|");
    const std::pair<const char *, std::int32_t> modes[] = {
        {"match", mirrorManager.matchFrameDelay},
        {"melt", mirrorManager.meltFrameDelay},
        {"fade", mirrorManager.fadeFrameDelay},
        {"palette", mirrorManager.paletteFrameDelay}};
    for (int mode = 0; mode < 4; ++mode) {
        const std::chrono::milliseconds delay(modes[mode].second);
        const auto loads = bench::measureInTurns(
            screen, bench::Motion::Whole,
            {{"bare parts", [=](std::atomic<long> &frames) { bareParts(mode, delay, frames); }, {}},
             {"mirroring", [=](std::atomic<long> &frames) { mirror(mode, frames); }, {}}},
            rounds, seconds);
        std::printf("| %s | %.2f | %.1f | %.2f | %.1f | %.2f |\n", modes[mode].first,
                    loads[0].total * 100, loads[0].frames, loads[1].total * 100, loads[1].frames,
                    loads[1].millisecondsPerFrame() / loads[0].millisecondsPerFrame());
        std::fflush(stdout);
    }
}
