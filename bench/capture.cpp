// Measures the cost of watching the screen with this library and with other programs: the processor
// time of the program and the time it adds to the display server's, at the same frame rate. The
// server is an X server, or sway if MIRROR_TEST_SERVER says so.
//
//     capture [ROUNDS [SECONDS]]
#include "bench/bareScreen.h"
#include "bench/frameCount.h"
#include "bench/measure.h"
#include "bench/screenLoad.h"
#include "mirror/screenMirrorMac.h"
#include "tests/support/xServer.h"

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

// The library's stream with its own handler, without a mode.
void captureWithLibrary(const bench::ScreenSize &size, std::atomic<long> &frames) {
    bench::countFrames(frames);
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    CGGetActiveDisplayList(1, &display, &count);
    std::string document = bench::configuration(display, size, 0, 1, 1);
    if (mirrorManager.setMirrorConfig(document.data()) != 1)
        std::exit(1);
    CGDisplayStreamStart(mirrorManager.displayStream);
}

void captureBare(const bench::ScreenSize &size, std::atomic<long> &frames) {
    bench::BareScreen screen(size);
    const auto buffer = std::make_unique<unsigned char[]>(size.bytes());
    bench::Pace pace(std::chrono::nanoseconds(1'000'000'000 / bench::framesPerSecond));
    for (;;) {
        pace.wait();
        screen.read();
        std::memcpy(buffer.get(), screen.pixels(), size.bytes());
        bench::escape(buffer);
        ++frames;
    }
}

// Raw pixels, without any conversion, to nowhere.
std::vector<std::string> recorder() {
    return {"sh", "-c", "exec wf-recorder -c rawvideo -x bgr0 -m null -f no-such-file 2>/dev/null"};
}

std::vector<std::string> ffmpeg(const bench::ScreenSize &size, const std::string &display,
                                std::vector<std::string> filter) {
    std::vector<std::string> command = {"ffmpeg",
                                        "-progress",
                                        "pipe:1",
                                        "-stats_period",
                                        "0.1",
                                        "-loglevel",
                                        "quiet",
                                        "-f",
                                        "x11grab",
                                        "-draw_mouse",
                                        "0",
                                        "-framerate",
                                        std::to_string(bench::framesPerSecond),
                                        "-video_size",
                                        std::to_string(size.width) + "x" +
                                            std::to_string(size.height),
                                        "-i",
                                        display};
    command.insert(command.end(), filter.begin(), filter.end());
    command.insert(command.end(), {"-f", "null", "-"});
    return command;
}

std::vector<std::string> gstreamer(const std::string &display, const std::string &useDamage) {
    return {"gst-launch-1.0",
            "-q",
            "ximagesrc",
            "display-name=" + display,
            "use-damage=" + useDamage,
            "show-pointer=false",
            "!",
            "video/x-raw,framerate=" + std::to_string(bench::framesPerSecond) + "/1",
            "!",
            "fakesink"};
}

void measure(const bench::ScreenSize &size, int rounds, double seconds) {
    test::VirtualScreen screen(size.width, size.height);
    const bool isWayland = test::serverKind() == test::ServerKind::Sway;
    std::vector<bench::Watcher> watchers = {
        {"this library's capture",
         [&size](std::atomic<long> &frames) { captureWithLibrary(size, frames); },
         {}},
        {isWayland ? "bare wlr-screencopy and copy" : "bare MIT-SHM read and copy",
         [&size](std::atomic<long> &frames) { captureBare(size, frames); },
         {}}};
    const std::vector<bench::Watcher> waylandPrograms = {
        {"wf-recorder, raw, to a null sink", {}, recorder()}};
    const std::vector<bench::Watcher> xPrograms = {
        {"ffmpeg x11grab, no pixel looked at", {}, ffmpeg(size, screen.display(), {})},
        {"ffmpeg x11grab, scale=80:80", {}, ffmpeg(size, screen.display(), {"-vf", "scale=80:80"})},
        {"gstreamer ximagesrc use-damage=0", {}, gstreamer(screen.display(), "0")},
        {"gstreamer ximagesrc use-damage=1", {}, gstreamer(screen.display(), "1")},
    };
    const std::vector<bench::Watcher> &programs = isWayland ? waylandPrograms : xPrograms;
    watchers.insert(watchers.end(), programs.begin(), programs.end());
    const std::pair<const char *, bench::Motion> motions[] = {{"still", bench::Motion::Still},
                                                              {"part", bench::Motion::Part},
                                                              {"whole", bench::Motion::Whole}};
    for (const auto &[name, motion] : motions) {
        const auto loads = bench::measureInTurns(screen, motion, watchers, rounds, seconds);
        for (std::size_t w = 0; w < watchers.size(); ++w) {
            const double cost = loads[w].millisecondsPerFrame();
            const double ours = loads[0].millisecondsPerFrame();
            std::printf("| %s | %s | %s | %.3f | %.0f | %.2f | %.2f |\n", size.name, name,
                        watchers[w].name.c_str(), loads[w].total * 100, loads[w].frames, cost,
                        ours == cost ? 1.0 : ours / cost);
        }
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char **argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 3;
    const double seconds = argc > 2 ? std::atof(argv[2]) : 2;
    std::puts(
        "Watching a screen, per cent of a processor (program and display server, the drawing taken "
        "off; median).\nMoving: a square of 64 pixels, or every pixel, 33 times a second.\n");
    std::puts("| screen | moving | watcher | load % | frames/s | ms/frame | ours / this |");
    std::puts("|---|---|---|---|---|---|---|");
    for (const bench::ScreenSize &size : bench::screenSizes)
        measure(size, rounds, seconds);
}
