// Measures the cost of taking a frame: the display stream's handler, compared with a plain copy of
// the same frame to the same buffer (another buffer could lie better or worse in memory).
#include "bench/measure.h"
#include "bench/otherCore.h"
#include "bench/scene.h"
#include "bench/standIn.h"
#include "mirror/screenMirrorMac.h"

#include <cstdio>
#include <cstring>

namespace {

struct Times {
    std::vector<double> handler;
    std::vector<double> copy;
};

void print(const char *size, const char *how, const Times &times) {
    const double handler = bench::median(times.handler);
    const double copy = bench::median(times.copy);
    std::printf("| %s | %s | %.0f | %.0f | %.2f |\n", size, how, copy, handler, handler / copy);
}

void measure(const bench::ScreenSize &size) {
    bench::setStandInSize(static_cast<std::size_t>(size.width),
                          static_cast<std::size_t>(size.height));
    std::string document = bench::configuration(bench::standInDisplay, size, 0, 1, 1);
    mirrorManager.setMirrorConfig(document.data());

    const std::vector<std::uint32_t> picture = bench::picture(size, bench::Content::Noise, 1);
    std::vector<std::uint32_t> surface = picture;
    Times times;
    const auto handler = [&] {
        times.handler.push_back(bench::microseconds([&] {
            bench::deliver(surface.data());
            bench::escape(mirrorManager.frameBuffer);
        }));
    };
    const auto copy = [&] {
        times.copy.push_back(bench::microseconds([&] {
            std::memcpy(mirrorManager.frameBuffer, surface.data(), size.bytes());
            bench::escape(mirrorManager.frameBuffer);
        }));
    };

    bench::OtherCore other;
    for (int i = 0; i < 400; ++i) {
        handler();
        copy();
    }
    print(size.name, "back to back", times);

    times = {};
    bench::Pace pace(std::chrono::milliseconds(30));
    for (int i = 0; i < 250; ++i) {
        pace.wait();
        other.rewrite(surface.data(), picture.data(), size.bytes());
        handler();
        pace.wait();
        other.rewrite(surface.data(), picture.data(), size.bytes());
        copy();
    }
    print(size.name, "one every 30 ms, just rewritten", times);
}

} // namespace

int main() {
    std::puts("Taking over one frame, microseconds (median).\n");
    std::puts("| screen | pace | bare copy | handler | ratio |");
    std::puts("|---|---|---|---|---|");
    for (const bench::ScreenSize &size : bench::screenSizes)
        measure(size);
}
