// Measures a tick of melt, fade and palette mode: one cycle of the mode, compared with the analysis
// of the screen, the mode's random numbers, and the same datagrams sent with plain system calls.
// Uses 1000 panels on 100 devices; before each tick another processor writes a picture of another
// colour.
#include "bench/modeCycles.h"
#include "bench/otherCore.h"
#include "colour/dominantColour.h"
#include "colour/palette.h"
#include "mirror/screenMirrorMac.h"

#include <cstdio>
#include <cstdlib>
#include <numeric>

namespace {

constexpr int panels = 1000;
constexpr int devices = 100;

void measure(const bench::ScreenSize &size, int mode, const char *name) {
    const std::vector<std::uint32_t> pictures[] = {bench::picture(size, bench::Content::Smooth, 1),
                                                   bench::picture(size, bench::Content::Smooth, 4)};
    std::vector<double> datagrams;
    bench::OtherCore other;
    bench::CycleTask task;
    task.mode = mode;
    task.panels = panels;
    task.devices = devices;
    task.cycles = 300;
    task.prepare = [&](int cycle) {
        other.rewrite(mirrorManager.frameBuffer, pictures[cycle % 2].data(), size.bytes());
    };
    task.floor = [&](bench::Loopback &loopback, const bench::Datagrams &sent) {
        if (mode == 3)
            bench::escape(paletteOf(mirrorManager.currentFrame(), mirrorManager.samplePixels,
                                    screenSampleCount, mirrorManager.paletteSize));
        else
            bench::escape(dominantColour(mirrorManager.currentFrame(), mirrorManager.samplePixels,
                                         screenSampleCount));
        for (int panel = 0; mode == 1 && panel < panels; ++panel)
            bench::escape(std::rand());
        for (std::size_t d = 0; d < sent.size(); ++d)
            loopback.send(d, sent[d]);
        datagrams.push_back(static_cast<double>(sent.size()));
    };
    const bench::CycleTimes times = bench::measureCycles(size, task);
    std::printf("| %s | %s | %.0f | %.0f | %.0f | %.2f |\n", size.name, name,
                std::accumulate(datagrams.begin(), datagrams.end(), 0.0) / datagrams.size(),
                times.floor, times.mode, times.ratio());
}

} // namespace

int main() {
    std::puts("One tick for 1000 panels on 100 devices, microseconds (median).\n");
    std::puts("| screen | mode | datagrams a tick | analysis, draws, bare sends | tick | ratio |");
    std::puts("|---|---|---|---|---|---|");
    for (const bench::ScreenSize &size : bench::screenSizes) {
        measure(size, 1, "melt");
        measure(size, 2, "fade");
        measure(size, 3, "palette");
    }
}
