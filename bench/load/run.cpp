#include "bench/load/run.h"

#include "bench/load/painter.h"
#include "bench/measure.h"

#include <map>
#include <sstream>

namespace load {

using bench::Clock;

// The limit for every wait.
static constexpr std::chrono::seconds patience{30};

// Memory use can vary by this much without a leak.
static constexpr long maxGrowthKiB = 1024;

static double since(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

// Receives until `done`. Returns false if that takes too long or the sender prints anything first.
template <class Done> static bool receiveUntil(Receivers &receivers, Sender &sender, Done done) {
    const auto deadline = Clock::now() + patience;
    auto nextLook = Clock::now();
    while (!done()) {
        receivers.receive(std::chrono::milliseconds(20));
        const auto now = Clock::now();
        if (now < nextLook)
            continue;
        nextLook = now + std::chrono::milliseconds(200);
        if (now > deadline || sender.hasEnded() || !sender.output().empty())
            return done();
    }
    return true;
}

static std::uint64_t framesTried(const SharedSendState &state) {
    return state.to[state.devices - 1].tried;
}

// Adds a fault for each distinct line that the sender has printed, with its count.
static void tellOutput(const Sender &sender, Result &result) {
    std::istringstream text(sender.output());
    std::map<std::string, int> lines;
    for (std::string line; std::getline(text, line);)
        ++lines[line];
    for (const auto &[line, count] : lines)
        result.faults.push_back("it wrote \"" + line + "\", " + std::to_string(count) + " times");
}

// Checks that every attempted datagram is accounted for, and that all arrived unchanged in order.
static void compare(const SharedSendState &state, const Receivers &receivers,
                    const std::vector<std::uint64_t> &droppedBefore, Result &result) {
    const auto fault = [&](int device, const std::string &text) {
        if (result.faults.size() < 10)
            result.faults.push_back(addressOf(device) + ": " + text);
    };
    for (int d = 0; d < state.devices; ++d) {
        const SentTo &to = state.to[d];
        const Receiver &receiver = receivers.all()[static_cast<std::size_t>(d)];
        const std::uint64_t dropped =
            receivers.dropped(d) - droppedBefore[static_cast<std::size_t>(d)];
        result.tried += to.tried;
        result.refused += to.refused;
        result.received += receiver.received;
        result.dropped += dropped;
        if (to.tried != state.to[0].tried)
            fault(d, "was sent " + std::to_string(to.tried) + " datagrams, the first device " +
                         std::to_string(state.to[0].tried));
        if (to.refused != 0)
            fault(d, std::to_string(to.refused) + " sends were refused by the system");
        if (dropped != 0)
            fault(d, std::to_string(dropped) + " datagrams were dropped by the kernel");
        if (to.tried - to.refused != receiver.received + dropped)
            fault(d, std::to_string(to.tried - to.refused) + " datagrams were sent, " +
                         std::to_string(receiver.received) + " came");
        else if (dropped == 0 && to.chain != receiver.chain)
            fault(d, "what came is not what was sent, or not in its order");
    }
    if (!receivers.fault().empty())
        result.faults.push_back(receivers.fault());
}

static void checkSamples(Result &result) {
    if (result.samples.empty())
        return;
    const ProcessSample &first = result.samples.front();
    const ProcessSample &last = result.samples.back();
    if (last.residentKiB > first.residentKiB + maxGrowthKiB)
        result.faults.push_back("memory grew from " + std::to_string(first.residentKiB) + " to " +
                                std::to_string(last.residentKiB) + " KiB");
    for (const ProcessSample &sample : result.samples)
        if (sample.descriptors != first.descriptors) {
            result.faults.push_back("descriptors changed from " +
                                    std::to_string(first.descriptors) + " to " +
                                    std::to_string(sample.descriptors));
            return;
        }
}

// Watches a running sender for `seconds` or for the plan's number of frames.
static void watch(const Plan &plan, double seconds, Receivers &receivers, SharedSendState &state,
                  Sender &sender, pid_t server, Result &result) {
    const auto serverNow = [server] { return server > 0 ? bench::processorSeconds(server) : 0.0; };
    receivers.keepIntervals();
    const auto begin = Clock::now();
    const double process = bench::processorSeconds(sender.pid());
    const double serverTime = serverNow();
    const std::int64_t threadTime = state.threadTime;
    const std::uint64_t frames = framesTried(state);
    auto nextSample = begin;
    bool spoke = false;
    while (since(begin) < seconds && !spoke &&
           (plan.frames == 0 || framesTried(state) < plan.frames)) {
        receivers.receive(std::chrono::milliseconds(20));
        if (Clock::now() < nextSample)
            continue;
        nextSample += std::chrono::seconds(1);
        result.samples.push_back(sampleOf(sender.pid()));
        spoke = sender.hasEnded() || !sender.output().empty();
    }
    result.samples.push_back(sampleOf(sender.pid()));
    result.seconds = since(begin);
    result.frames = framesTried(state) - frames;
    const double perFrame = 1e6 / static_cast<double>(std::max<std::uint64_t>(1, result.frames));
    result.cost.process = (bench::processorSeconds(sender.pid()) - process) * perFrame;
    result.cost.thread = static_cast<double>(state.threadTime - threadTime) / 1e9 * perFrame;
    result.cost.server = (serverNow() - serverTime) * perFrame;
}

// Ends the sender and receives its remaining datagrams.
static void finish(Receivers &receivers, SharedSendState &state, Sender &sender,
                   const std::vector<std::uint64_t> &droppedBefore, Result &result) {
    sender.stop();
    const auto deadline = Clock::now() + patience;
    while (!sender.hasEnded() && Clock::now() < deadline)
        receivers.receive(std::chrono::milliseconds(20));
    if (!sender.hasEnded())
        result.faults.push_back("the sender does not end");
    else if (!sender.succeeded())
        result.faults.push_back("the sender failed");
    // On loopback every datagram sent has arrived already.
    for (std::uint64_t before = ~0ull; before != receivers.frames();) {
        before = receivers.frames();
        for (int i = 0; i < 20; ++i)
            receivers.receive(std::chrono::milliseconds(0));
    }
    tellOutput(sender, result);
    compare(state, receivers, droppedBefore, result);
    checkSamples(result);
    result.counts = receivers.frameCounts();
    result.mixtures = receivers.mixtures();
    result.intervals = receivers.intervals();
}

static std::vector<std::uint64_t> allDropped(const Receivers &receivers, int devices) {
    std::vector<std::uint64_t> dropped;
    for (int d = 0; d < devices; ++d)
        dropped.push_back(receivers.dropped(d));
    return dropped;
}

Result runLibrary(const Plan &plan, Receivers &receivers, SharedSendState &state) {
    Result result;
    test::VirtualScreen screen(plan.width, plan.height);
    screen.use();
    screen.fill(colourOf(0));
    receivers.forget();
    const auto droppedBefore = allDropped(receivers, plan.devices);
    Sender sender(state, plan, [&] { return mirror(state, plan); });
    if (!receiveUntil(receivers, sender, [&] { return receivers.frames() >= 2; })) {
        result.faults.push_back("not every device is sent something");
    } else {
        Painter painter(screen, plan.drawTime);
        // After ten frames, every page of memory that is needed has been touched.
        receiveUntil(receivers, sender, [&] { return receivers.frames() >= 10; });
        watch(plan, plan.seconds, receivers, state, sender, screen.pid(), result);
        result.drawings = painter.stop();
        if (!receiveUntil(receivers, sender, [&] { return receivers.allShow(result.drawings); }))
            result.faults.push_back("the last drawing is not seen at every panel");
    }
    finish(receivers, state, sender, droppedBefore, result);
    return result;
}

Result runBare(const Plan &plan, Receivers &receivers, const SharedSendState &model,
               std::chrono::nanoseconds period, double seconds) {
    Result result;
    SharedSendState &state = makeSharedSendState(plan.devices);
    receivers.forget();
    const auto droppedBefore = allDropped(receivers, plan.devices);
    Sender sender(state, plan, [&] { return sendBare(state, model, period); });
    if (receiveUntil(receivers, sender, [&] { return receivers.frames() >= 2; }))
        watch({}, seconds, receivers, state, sender, 0, result);
    finish(receivers, state, sender, droppedBefore, result);
    return result;
}

} // namespace load
