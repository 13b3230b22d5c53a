// Tests the library under load: many devices on a large moving screen. Checks at the receiving end
// every datagram that the library tries to send. Exits with 1 if a datagram is missing, a panel
// goes back to an earlier drawing, or memory or descriptors grow.
#include "bench/load/run.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sys/resource.h>

using namespace load;

static std::string machineLoad() {
    std::ifstream file("/proc/loadavg");
    std::string one, five;
    file >> one >> five;
    return one + " and " + five;
}

static void print(const Plan &plan, const Result &result) {
    const double seconds = std::max(result.seconds, 1e-9);
    std::printf("%llu frames in %.1f s, %.2f a second; %lld drawings of the screen\n",
                static_cast<unsigned long long>(result.frames), seconds,
                static_cast<double>(result.frames) / seconds,
                static_cast<long long>(result.drawings));
    std::printf(
        "\n| tried | refused by the system | received | dropped by the kernel | missing |\n"
        "|---|---|---|---|---|\n| %llu | %llu | %llu | %llu | %lld |\n",
        static_cast<unsigned long long>(result.tried),
        static_cast<unsigned long long>(result.refused),
        static_cast<unsigned long long>(result.received),
        static_cast<unsigned long long>(result.dropped),
        static_cast<long long>(result.tried - result.refused - result.received - result.dropped));
    const auto all = result.counts.whole + result.counts.ofTwo + result.counts.ofMore;
    std::printf("\nOf %llu frames, each a datagram for every device, %llu show one step of the "
                "screen, %llu two, %llu more. Of %llu colours %llu mix two steps.\n",
                static_cast<unsigned long long>(all),
                static_cast<unsigned long long>(result.counts.whole),
                static_cast<unsigned long long>(result.counts.ofTwo),
                static_cast<unsigned long long>(result.counts.ofMore),
                static_cast<unsigned long long>(result.received) *
                    static_cast<unsigned long long>(plan.panels),
                static_cast<unsigned long long>(result.mixtures));
    std::printf(
        "\n| from one datagram of a device to the next, ms | min | median | p95 | p99 | max "
        "|\n|---|---|---|---|---|---|\n| %llu intervals |",
        static_cast<unsigned long long>(result.intervals.size()));
    for (const double q : {0.0, 0.5, 0.95, 0.99, 1.0})
        std::printf(" %.2f |", result.intervals.quantile(q));
    if (result.samples.empty())
        return;
    const auto sample = [&](const char *name, const ProcessSample &at) {
        std::printf("| %s | %ld | %ld |\n", name, at.residentKiB, at.descriptors);
    };
    std::printf("\n\n| the host, sampled %zu times | VmRSS, KiB | descriptors |\n|---|---|---|\n",
                result.samples.size());
    sample("start", result.samples.front());
    sample("middle", result.samples[result.samples.size() / 2]);
    sample("end", result.samples.back());
    sample("most", *std::max_element(result.samples.begin(), result.samples.end(),
                                     [](const ProcessSample &a, const ProcessSample &b) {
                                         return a.residentKiB < b.residentKiB;
                                     }));
}

static void printCosts(const Result &library, const Result &bare) {
    std::printf(
        "\n| processor time, microseconds a frame | process | its sending thread | X server "
        "|\n|---|---|---|---|\n| library | %.0f | %.0f | %.0f |\n| bare sends | %.0f | %.0f "
        "| |\n| ratio | %.2f | %.2f | |\n",
        library.cost.process, library.cost.thread, library.cost.server, bare.cost.process,
        bare.cost.thread, library.cost.process / std::max(bare.cost.process, 1.0),
        library.cost.thread / std::max(bare.cost.thread, 1.0));
}

static int tellFaults(const char *who, const Result &result) {
    for (const std::string &fault : result.faults)
        std::printf("\nFAILED: %s: %s\n", who, fault.c_str());
    return result.faults.empty() ? 0 : 1;
}

static int run(const Plan &plan) {
    std::printf("%d devices of %d panels, %d x %d, %d ms after each frame; load of the machine "
                "before: %s\n\n",
                plan.devices, plan.panels, plan.width, plan.height, plan.frameDelay,
                machineLoad().c_str());
    std::fflush(stdout);
    // Allows one socket per device, and the other descriptors.
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    Receivers receivers(plan.devices, plan.panels);
    SharedSendState &state = makeSharedSendState(plan.devices);
    const Result library = runLibrary(plan, receivers, state);
    print(plan, library);
    if (!library.faults.empty())
        return tellFaults("the library", library);
    std::fflush(stdout);
    const auto period =
        std::chrono::nanoseconds(static_cast<long>(library.intervals.quantile(0.5) * 1e6));
    const Result bare =
        runBare(plan, receivers, state, period, std::min(60.0, library.seconds / 4));
    printCosts(library, bare);
    std::printf("\nLoad of the machine after: %s\n", machineLoad().c_str());
    return tellFaults("the bare sender", bare);
}

int main(int argc, char **argv) {
    Plan plan;
    CLI::App app{"Mirrors a moving screen onto many devices and looks for everything at the "
                 "receiving end."};
    app.add_option("--devices", plan.devices)->check(CLI::Range(1, maxDevices));
    app.add_option("--panels", plan.panels, "Of each device")->check(CLI::Range(1, 500));
    app.add_option("--width", plan.width);
    app.add_option("--height", plan.height);
    app.add_option("--seconds", plan.seconds);
    app.add_option("--frames", plan.frames, "End after so many, 0: never");
    app.add_option("--delay", plan.frameDelay, "Milliseconds after each frame");
    app.add_option("--stream-time", plan.minimumFrameTime, "Seconds between the stream's frames");
    app.add_option("--draw-time", plan.drawTime, "Seconds between drawings");
    app.add_option("--descriptors", plan.descriptors, "The host's limit");
    CLI11_PARSE(app, argc, argv);
    try {
        return run(plan);
    } catch (const std::exception &error) {
        std::cerr << "load: " << error.what() << "\n";
        return 2;
    }
}
