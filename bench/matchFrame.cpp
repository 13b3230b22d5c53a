// Measures a frame of match mode: one cycle of the mode, compared with reading the same pixels and
// sending the same datagrams with plain system calls.
#include "bench/modeCycles.h"
#include "bench/otherCore.h"
#include "mirror/screenMirrorMac.h"

#include <cstdio>

namespace {

void readAndSend(bench::Loopback &loopback, const bench::Datagrams &sent) {
    const auto *pixels = reinterpret_cast<const std::uint32_t *>(mirrorManager.frameBuffer);
    for (std::size_t d = 0; d < sent.size(); ++d) {
        std::uint32_t sum = 0;
        for (const Panel &panel : mirrorManager.devices[d].panels)
            for (const std::int32_t index : panel.samplePixels)
                sum += pixels[index];
        bench::escape(sum);
        loopback.send(d, sent[d]);
    }
}

void measure(const bench::ScreenSize &size, int panels, int devices) {
    const auto picture = bench::picture(size, bench::Content::Noise, 1);
    bench::OtherCore other;
    bench::CycleTask task;
    task.panels = panels;
    task.devices = devices;
    task.floor = readAndSend;

    task.cycles = 2000;
    task.prepare = [&](int cycle) {
        if (cycle == 0)
            std::memcpy(mirrorManager.frameBuffer, picture.data(), size.bytes());
    };
    const bench::CycleTimes warm = bench::measureCycles(size, task);

    task.cycles = 300;
    task.prepare = [&](int) {
        other.rewrite(mirrorManager.frameBuffer, picture.data(), size.bytes());
    };
    const bench::CycleTimes fresh = bench::measureCycles(size, task);
    std::printf("| %s | %d on %d | %.1f | %.1f | %.2f | %.1f | %.1f | %.2f |\n", size.name, panels,
                devices, warm.floor, warm.mode, warm.ratio(), fresh.floor, fresh.mode,
                fresh.ratio());
}

} // namespace

int main() {
    std::puts("One frame of match mode, microseconds (median); warm: the pixels are in this\n"
              "processor's cache; fresh: another processor has just written them.\n");
    std::puts("| screen | panels on devices | warm floor | warm | ratio "
              "| fresh floor | fresh | ratio |");
    std::puts("|---|---|---|---|---|---|---|---|");
    for (const bench::ScreenSize &size : bench::screenSizes) {
        measure(size, 1, 1);
        measure(size, 30, 1);
        measure(size, 1000, 1);
        measure(size, 1000, 100);
    }
}
