// Measures the colour analysis of the whole screen: dominant colour and palette, compared with only
// reading the same pixels in place, from a frame that another processor has just written.
#include "bench/measure.h"
#include "bench/otherCore.h"
#include "bench/scene.h"
#include "colour/dominantColour.h"
#include "colour/palette.h"
#include "device/screenGrid.h"

#include <cstdio>

namespace {

constexpr int repetitions = 300;
constexpr int paletteSize = 8;

void measure(const bench::ScreenSize &size, bench::Content content, const char *contentName) {
    const std::vector<std::uint32_t> picture = bench::picture(size, content, 1);
    std::vector<std::uint32_t> pixels(picture.size());
    const Frame frame{reinterpret_cast<const unsigned char *>(pixels.data()), pixels.size()};
    std::int32_t samples[screenSampleCount];
    fillScreenGrid(static_cast<std::uint64_t>(size.width), static_cast<std::uint64_t>(size.height),
                   samples);

    bench::OtherCore other;
    const auto timeOf = [&](std::vector<double> &times, auto work) {
        other.rewrite(pixels.data(), picture.data(), size.bytes());
        times.push_back(bench::microseconds(work));
    };
    std::vector<double> floor, dominant, palette;
    for (int i = 0; i < repetitions; ++i) {
        timeOf(floor, [&] {
            std::uint32_t sum = 0;
            for (int s = 0; s < screenSampleCount - 1; ++s)
                sum += pixels[static_cast<std::size_t>(samples[s])];
            bench::escape(sum);
        });
        timeOf(dominant, [&] { bench::escape(dominantColour(frame, samples, screenSampleCount)); });
        timeOf(palette,
               [&] { bench::escape(paletteOf(frame, samples, screenSampleCount, paletteSize)); });
    }
    const double least = bench::median(floor);
    std::printf("| %s | %s | %.1f | %.1f | %.2f | %.1f | %.2f |\n", size.name, contentName, least,
                bench::median(dominant), bench::median(dominant) / least, bench::median(palette),
                bench::median(palette) / least);
}

} // namespace

int main() {
    std::puts("Analysis of 6,400 pixels of a frame that another processor has just written, "
              "microseconds (median).\n");
    std::puts("| screen | picture | reading alone | dominant colour | ratio | palette | ratio |");
    std::puts("|---|---|---|---|---|---|---|");
    for (const bench::ScreenSize &size : bench::screenSizes) {
        measure(size, bench::Content::Smooth, "smooth");
        measure(size, bench::Content::Noise, "noise");
    }
}
