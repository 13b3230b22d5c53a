// How long a change of the screen takes to reach a light, as a distribution, in match mode with the
// library's own settings; beside it what its two fixed delays alone dictate.
//
//     latency [DRAWS]
#include "bench/measure.h"
#include "bench/scene.h"
#include "mirror/screenMirrorMac.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"

#include <atomic>
#include <cstdio>
#include <random>
#include <thread>

namespace {

using bench::Clock;

constexpr int widePort = 60222;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

struct Arrival {
    Clock::time_point time;
    int number; // of the drawing whose colour it carries
};

// Colours that tell which drawing they are of.
std::uint32_t colourOf(int number) {
    return static_cast<std::uint32_t>(number) << 8 | 0x4d;
}
int numberOf(const test::Datagram &datagram) {
    return datagram.size() == 10 ? datagram[4] << 8 | datagram[5] : 0;
}

struct Recording {
    std::vector<Clock::time_point> drawn; // drawing i has number i + 1
    std::vector<Arrival> arrivals;
};

Recording record(const bench::ScreenSize &size, int draws, double leastGap, double greatestGap) {
    test::VirtualScreen screen(size.width, size.height);
    screen.use();
    test::LightReceiver light("127.0.0.1", widePort);
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    CGGetActiveDisplayList(1, &display, &count);
    std::string document = bench::configuration(display, size, 0, 1, 1);
    if (mirrorManager.setMirrorConfig(document.data()) != 1 || mirrorManager.startMirror() != 1)
        std::exit(1);

    Recording recording;
    std::atomic<bool> done = false;
    std::thread listener([&] {
        while (!done)
            if (const auto datagram = light.next(std::chrono::seconds(1)))
                recording.arrivals.push_back({Clock::now(), numberOf(*datagram)});
    });
    std::mt19937 random(1);
    std::uniform_real_distribution<double> gap(leastGap, greatestGap);
    bench::sleepUntil(Clock::now() + std::chrono::milliseconds(500));
    for (int number = 1; number <= draws; ++number) {
        bench::sleepUntil(Clock::now() +
                          std::chrono::microseconds(static_cast<long>(gap(random) * 1000)));
        screen.fill(colourOf(number));
        recording.drawn.push_back(Clock::now());
    }
    bench::sleepUntil(Clock::now() + std::chrono::milliseconds(500));
    done = true;
    listener.join();
    mirrorManager.stopMirror();
    return recording;
}

// From each drawing to the first datagram that shows it, or a later one.
std::vector<double> measured(const Recording &recording) {
    std::vector<double> latencies;
    std::size_t a = 0;
    for (std::size_t i = 0; i < recording.drawn.size(); ++i) {
        while (a < recording.arrivals.size() &&
               recording.arrivals[a].number < static_cast<int>(i) + 1)
            ++a;
        if (a < recording.arrivals.size())
            latencies.push_back(milliseconds(recording.arrivals[a].time - recording.drawn[i]));
    }
    return latencies;
}

// The same drawings and the same datagrams, if everything but the two delays took no time: a frame
// is there at once, but no sooner than the minimum frame time after the last one, and the next
// datagram shows it.
std::vector<double> dictated(const Recording &recording) {
    const auto frameTime = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(mirrorManager.minimumFrameTime));
    std::vector<double> latencies;
    Clock::time_point lastFrame{};
    std::size_t a = 0;
    for (const Clock::time_point drawn : recording.drawn) {
        if (drawn > lastFrame) // else the frame that is still to come shows this one as well
            lastFrame = std::max(drawn, lastFrame + frameTime);
        while (a < recording.arrivals.size() && recording.arrivals[a].time < lastFrame)
            ++a;
        if (a < recording.arrivals.size())
            latencies.push_back(milliseconds(recording.arrivals[a].time - drawn));
    }
    return latencies;
}

double periodOf(const Recording &recording) {
    std::vector<double> periods;
    for (std::size_t a = 1; a < recording.arrivals.size(); ++a)
        periods.push_back(
            milliseconds(recording.arrivals[a].time - recording.arrivals[a - 1].time));
    return bench::median(periods);
}

void print(const char *size, const char *gaps, const char *what,
           const std::vector<double> &values) {
    std::printf("| %s | %s | %s |", size, gaps, what);
    for (const double q : {0.0, 0.5, 0.95, 0.99, 1.0})
        std::printf(" %.1f |", bench::quantile(values, q));
    std::puts("");
}

void measure(const bench::ScreenSize &size, int draws, const char *gaps, double leastGap,
             double greatestGap) {
    const Recording recording = record(size, draws, leastGap, greatestGap);
    const std::vector<double> real = measured(recording);
    const std::vector<double> model = dictated(recording);
    print(size.name, gaps, "measured", real);
    print(size.name, gaps, "dictated by the delays", model);
    std::printf("| %s | %s | difference |", size.name, gaps);
    for (const double q : {0.0, 0.5, 0.95, 0.99, 1.0})
        std::printf(" %+.1f |", bench::quantile(real, q) - bench::quantile(model, q));
    std::printf("\n| %s | %s | datagrams: %zu, one every %.1f ms; drawings seen: %zu of %d | | | | "
                "| |\n",
                size.name, gaps, recording.arrivals.size(), periodOf(recording), real.size(),
                draws);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    const int draws = argc > 1 ? std::atoi(argv[1]) : 400;
    std::puts("From the moment when the server has drawn to the datagram's arrival on loopback, "
              "milliseconds.\nDrawings of the whole screen at random distances.\n");
    std::puts("| screen | distance | | min | median | p95 | p99 | max |");
    std::puts("|---|---|---|---|---|---|---|---|");
    for (const bench::ScreenSize &size : bench::screenSizes) {
        measure(size, draws, "60 to 180 ms", 60, 180);
        measure(size, draws, "1 to 60 ms", 1, 60);
    }
}
