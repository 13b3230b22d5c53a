// Measures how long a change of the screen takes to reach a light, as a distribution, in match mode
// with the library's own settings. Compares it with the latency that the two fixed delays alone
// cause, and with the delays plus a plain read and copy of the frame.
//
//     latency [DRAWS]
#include "bench/bareScreen.h"
#include "bench/measure.h"
#include "bench/scene.h"
#include "mirror/screenMirrorMac.h"
#include "tests/support/lightReceiver.h"
#include "tests/support/virtualScreen.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <thread>

namespace {

using bench::Clock;

constexpr char lightAddress[] = "127.77.0.1";
constexpr int widePort = 60222;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

struct Arrival {
    Clock::time_point time;
    int number; // of the drawing whose colour it carries
};

// The colour encodes the number of the drawing.
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
    test::LightReceiver light(lightAddress, widePort);
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    CGGetActiveDisplayList(1, &display, &count);
    std::string document = bench::configuration(display, size, 0, 1, 1, lightAddress);
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

// The time from each drawing to the first datagram that shows it or a later drawing; infinite if
// there is none.
std::vector<double> measured(const Recording &recording) {
    std::vector<double> latencies;
    std::size_t a = 0;
    for (std::size_t i = 0; i < recording.drawn.size(); ++i) {
        while (a < recording.arrivals.size() &&
               recording.arrivals[a].number < static_cast<int>(i) + 1)
            ++a;
        latencies.push_back(a < recording.arrivals.size()
                                ? milliseconds(recording.arrivals[a].time - recording.drawn[i])
                                : std::numeric_limits<double>::infinity());
    }
    return latencies;
}

// The latencies of the same drawings and datagrams if a frame took `captureTime` to arrive and
// nothing else took any time: a frame is taken at once, but no sooner than the minimum frame time
// after the last one, and the next datagram shows it.
std::vector<double> dictated(const Recording &recording, Clock::duration captureTime) {
    const auto frameTime = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(mirrorManager.minimumFrameTime));
    std::vector<double> latencies;
    Clock::time_point lastFrame{};
    std::size_t a = 0;
    for (const Clock::time_point drawn : recording.drawn) {
        if (drawn > lastFrame) // else the pending frame shows this drawing too
            lastFrame = std::max(drawn, lastFrame + frameTime);
        while (a < recording.arrivals.size() &&
               recording.arrivals[a].time < lastFrame + captureTime)
            ++a;
        latencies.push_back(a < recording.arrivals.size()
                                ? milliseconds(recording.arrivals[a].time - drawn)
                                : std::numeric_limits<double>::infinity());
    }
    return latencies;
}

// For each drawing.
std::vector<double> differences(const std::vector<double> &a, const std::vector<double> &b) {
    std::vector<double> result;
    for (std::size_t i = 0; i < a.size(); ++i)
        result.push_back(a[i] - b[i]);
    return result;
}

// The median time of a plain read and copy of a screen that was just drawn on.
Clock::duration bareCaptureTime(const bench::ScreenSize &size) {
    test::VirtualScreen screen(size.width, size.height);
    screen.use();
    bench::BareScreen bare(size);
    const auto buffer = std::make_unique<unsigned char[]>(size.bytes());
    std::vector<double> times;
    for (int i = 1; i <= 30; ++i) {
        bench::sleepUntil(Clock::now() + std::chrono::milliseconds(100));
        screen.fill(colourOf(i));
        times.push_back(bench::microseconds([&] {
            bare.read();
            std::memcpy(buffer.get(), bare.pixels(), size.bytes());
            bench::escape(buffer);
        }));
    }
    return std::chrono::microseconds(static_cast<long>(bench::median(times)));
}

double periodOf(const Recording &recording) {
    std::vector<double> periods;
    for (std::size_t a = 1; a < recording.arrivals.size(); ++a)
        periods.push_back(
            milliseconds(recording.arrivals[a].time - recording.arrivals[a - 1].time));
    return bench::median(periods);
}

using Values = std::vector<double>;

void printRow(const char *where, const char *what, const Values &values, const Values *minus) {
    std::printf("| %s | %s |", where, what);
    for (const double q : {0.0, 0.5, 0.95, 0.99, 1.0})
        std::printf(minus ? " %+.1f |" : " %.1f |",
                    bench::quantile(values, q) - (minus ? bench::quantile(*minus, q) : 0));
    std::puts("");
}

void measure(const bench::ScreenSize &size, int draws, double leastGap, double greatestGap) {
    const Recording recording = record(size, draws, leastGap, greatestGap);
    const Clock::duration captureTime = bareCaptureTime(size);
    const Values real = measured(recording);
    const Values delays = dictated(recording, {});
    const Values delaysAndCopy = dictated(recording, captureTime);
    char where[64];
    std::snprintf(where, sizeof where, "%s, %.0f to %.0f ms", size.name, leastGap, greatestGap);
    std::puts("| screen, distance | | min | median | p95 | p99 | max |");
    std::puts("|---|---|---|---|---|---|---|");
    printRow(where, "measured", real, nullptr);
    printRow(where, "the two delays", delays, nullptr);
    printRow(where, "measured - delays", real, &delays);
    printRow(where, "measured - delays, bare read and copy", real, &delaysAndCopy);
    const Values later = differences(real, delays);
    printRow(where, "later than the delays, drawing by drawing", later, nullptr);
    const auto onTime =
        std::count_if(later.begin(), later.end(), [](double ms) { return ms < 1.0; });
    const auto seen = std::count_if(real.begin(), real.end(), [](double ms) { return ms < 1e6; });
    std::printf("\n%s: %d of %d drawings seen, %d of them no later than the delays dictate; a "
                "datagram every %.1f ms; bare read and copy %.1f ms\n\n",
                where, static_cast<int>(seen), draws, static_cast<int>(onTime), periodOf(recording),
                milliseconds(captureTime));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    const int draws = argc > 1 ? std::atoi(argv[1]) : 300;
    std::puts("From the moment when the server has drawn to the datagram's arrival on loopback, "
              "milliseconds.\nDrawings of the whole screen at random distances.\n");
    for (const bench::ScreenSize &size : bench::screenSizes) {
        measure(size, draws, 60, 180);
        measure(size, draws, 1, 60);
    }
}
