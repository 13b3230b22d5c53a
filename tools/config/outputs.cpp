#include "tools/config/outputs.h"

#include "tools/config/tree.h"
#include "tools/lights/address.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <array>
#include <map>

namespace config {

using lights::format;

// Bounds the memory that a mistyped number takes.
static constexpr std::size_t mostPixels = 1'000'000;

static constexpr std::array<ProtocolTraits, 4> protocols = {{{"ddp", "DDP", 4048, 0, 0},
                                                             {"e131", "E1.31", 5568, 1, 63999},
                                                             {"artnet", "Art-Net", 6454, 0, 32767},
                                                             {"wled", "WLED", 21324, 0, 0}}};

const ProtocolTraits &traitsOf(Protocol protocol) {
    return protocols[static_cast<std::size_t>(protocol)];
}

std::optional<Protocol> protocolNamed(std::string_view word) {
    for (std::size_t i = 0; i < protocols.size(); ++i)
        if (word == protocols[i].word)
            return static_cast<Protocol>(i);
    return std::nullopt;
}

std::size_t pixelsPerPacket(const OutputEntry &output, std::size_t pixels) {
    switch (output.protocol) {
    case Protocol::Ddp:
        return 1440 / output.channels();
    case Protocol::E131:
    case Protocol::ArtNet:
        return 512 / output.channels();
    case Protocol::Wled:
        break;
    }
    if (output.channels() == 4)
        return 367;
    return output.firstPixel == 0 && pixels <= 490 ? 490 : 489;
}

static std::size_t pixelEnd(const OutputEntry &output, std::size_t pixels) {
    return static_cast<std::size_t>(output.firstPixel) + pixels;
}

std::string describePackets(const OutputEntry &output, std::size_t pixels) {
    const std::size_t most = pixelsPerPacket(output, pixels);
    const auto first = static_cast<std::size_t>(output.firstPixel);
    const std::string text = lights::counted(pixels, "pixel");
    if (traitsOf(output.protocol).lastUniverse == 0) {
        const std::size_t packets = (pixels + most - 1) / most;
        return text + " in " + lights::counted(packets, "packet") + format(" of at most %zu", most);
    }
    const std::size_t begin = static_cast<std::size_t>(output.universe) + first / most;
    const std::size_t last =
        static_cast<std::size_t>(output.universe) + (pixelEnd(output, pixels) - 1) / most;
    return text +
           (begin == last ? format(" in universe %zu", begin)
                          : format(" in universes %zu to %zu", begin, last)) +
           format(" of at most %zu", most);
}

std::string nameOutput(const OutputEntry &output) {
    return format("output %zu (%s to %s)", output.index, traitsOf(output.protocol).name,
                  output.isMulticast() ? "multicast"
                                       : lights::endpointText(output.ip, output.port).c_str());
}

// The most pixels that a receiver can have.
static std::size_t receiverPixels(const OutputEntry &output) {
    const ProtocolTraits &traits = traitsOf(output.protocol);
    if (traits.lastUniverse > 0)
        return std::min(mostPixels,
                        static_cast<std::size_t>(traits.lastUniverse - output.universe + 1) *
                            pixelsPerPacket(output, 0));
    if (output.protocol == Protocol::Wled)
        return output.channels() == 4 ? 367 : 65536;
    return mostPixels;
}

namespace {

// Numbers that are taken: pixels or universes of one receiver, by the first of each run.
struct Taken {
    std::size_t last;
    std::size_t output;
};
using TakenRuns = std::map<std::size_t, Taken>;

// What is wrong with an output, as a member, a message and a fix.
struct Fault {
    const char *member;
    std::string message;
    std::string fix;
};

} // namespace

static std::optional<Fault> findAddressFault(const OutputEntry &output) {
    if (!output.interface.empty()) {
        const auto found = lights::parseEndpoint(output.interface, 0);
        if (!found || found->any.sa_family != AF_INET)
            return Fault{"interface",
                         "expected an IPv4 address of this machine, found " +
                             lights::quote(output.interface),
                         "write the address that this machine has on the network of the lights"};
    }
    if (output.isMulticast())
        return std::nullopt;
    if (const auto error = lights::findAddressError(output.ip))
        return Fault{"ip", error->message,
                     output.protocol == Protocol::E131
                         ? "write the receiver's own address in numbers, or \"multicast\""
                         : "write the receiver's own address in numbers, such as 192.0.2.40; its "
                           "port is a member of its own"};
    return std::nullopt;
}

// The fault of an output whose device has `panels` panels.
static std::optional<Fault> findPixelFault(const OutputEntry &output, std::size_t panels) {
    const ProtocolTraits &traits = traitsOf(output.protocol);
    if (panels == 0)
        return Fault{"device", "found a device without panels, of which there is nothing to show",
                     "add panels to the device, or take the output away"};
    if (traits.lastUniverse > 0 &&
        (output.universe < traits.firstUniverse || output.universe > traits.lastUniverse))
        return Fault{"universe",
                     format("expected a universe from %d to %d for %s, found %d",
                            traits.firstUniverse, traits.lastUniverse, traits.name,
                            output.universe),
                     "write the universe that is set in the receiver"};
    if (output.protocol == Protocol::Wled && output.channels() == 4 && output.firstPixel > 0)
        return Fault{"firstPixel",
                     format("expected 0, found %d; this protocol sends pixels with white from the "
                            "first on only",
                            output.firstPixel),
                     "use the protocol ddp, which the same receivers understand"};
    const std::size_t end =
        pixelEnd(output, panels * static_cast<std::size_t>(output.pixelsPerPanel));
    if (end > receiverPixels(output))
        return Fault{"pixelsPerPanel",
                     format("expected at most %zu pixels for %s, found %zu", receiverPixels(output),
                            traits.name, end),
                     output.protocol == Protocol::Wled
                         ? "use the protocol ddp, which the same receivers understand"
                         : "share the pixels out to several receivers"};
    return std::nullopt;
}

// Takes the output's pixels or universes, unless an earlier output has some of them.
static std::optional<Fault> take(TakenRuns &taken, const OutputEntry &output, std::size_t pixels,
                                 std::size_t index) {
    const bool hasUniverses = traitsOf(output.protocol).lastUniverse > 0;
    const std::size_t unit = hasUniverses ? pixelsPerPacket(output, pixels) : 1;
    const std::size_t base = hasUniverses ? static_cast<std::size_t>(output.universe) : 0;
    const std::size_t first = base + static_cast<std::size_t>(output.firstPixel) / unit;
    const std::size_t last = base + (pixelEnd(output, pixels) - 1) / unit;
    const auto after = taken.upper_bound(last);
    if (after != taken.begin() && std::prev(after)->second.last >= first) {
        const auto &[begin, run] = *std::prev(after);
        const char *thing = hasUniverses ? "universe" : "pixel";
        return Fault{hasUniverses ? "universe" : "firstPixel",
                     format("found %s %zu again, which output %zu to the same address has", thing,
                            std::max(begin, first), run.output),
                     hasUniverses ? format("begin with a universe that is free; each holds %zu "
                                           "pixels",
                                           unit)
                                  : format("begin with pixel %zu", run.last + 1)};
    }
    taken.emplace(first, Taken{last, index});
    return std::nullopt;
}

std::vector<std::optional<Problem>> findOutputProblems(const Document &document) {
    std::vector<std::optional<Problem>> problems;
    if (!document.bridge)
        return problems;
    std::map<std::string, TakenRuns> receivers; // by address and port
    for (std::size_t i = 0; i < document.bridge->outputs.size(); ++i) {
        const OutputEntry &output = document.bridge->outputs[i];
        std::optional<Fault> fault = findAddressFault(output);
        const auto device = static_cast<std::size_t>(output.device);
        if (!fault && device >= document.devices.size())
            fault = Fault{"device",
                          format("expected the number of a device, which count from 0, found %d "
                                 "of %zu",
                                 output.device, document.devices.size()),
                          "write the place of the device in the list of devices"};
        if (!fault) {
            const std::size_t panels = document.devices[device].panels.size();
            fault = findPixelFault(output, panels);
            const auto endpoint = lights::parseEndpoint(output.ip, output.port);
            const std::string receiver =
                endpoint ? std::string(endpoint->bytes()) : std::to_string(output.port);
            if (!fault)
                fault = take(receivers[receiver], output,
                             panels * static_cast<std::size_t>(output.pixelsPerPanel), i);
        }
        problems.emplace_back();
        if (fault)
            problems.back() = Problem{stepInto(stepInto("/lightbridge/outputs", i), fault->member),
                                      fault->message,
                                      fault->fix,
                                      {},
                                      Severity::Warning};
    }
    return problems;
}

} // namespace config
