// Lights with other protocols, which lightbridge drives: the member "lightbridge" of a document,
// and the limits of the protocols.
//
// Pure functions, callable from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace config {

struct Document;
struct Problem;

enum class Protocol { Ddp, E131, ArtNet, Wled };

struct ProtocolTraits {
    const char *word; // in documents
    const char *name; // in messages
    int port;         // UDP
    std::int32_t firstUniverse;
    std::int32_t lastUniverse; // 0: the protocol has no universes
};

const ProtocolTraits &traitsOf(Protocol protocol);
std::optional<Protocol> protocolNamed(std::string_view word);

// One receiver, or some of its pixels. The defaults are the schema's.
struct OutputEntry {
    std::size_t index = 0; // in the document's outputs
    Protocol protocol = Protocol::Ddp;
    std::string ip;          // or "multicast"
    std::int32_t device = 0; // index in the document's devices
    std::int32_t port = 0;
    std::int32_t universe = 0; // of the receiver's pixel 0
    std::int32_t priority = 100;
    std::string interface = {}; // empty: the system chooses one
    std::int32_t firstPixel = 0;
    std::int32_t pixelsPerPanel = 1;
    std::string colourOrder = "RGB";
    double gamma = 1.0;
    std::string whiteBalance = "#ffffff";
    std::int32_t brightness = 100; // percent
    std::int32_t smoothing = 0;    // milliseconds

    bool isMulticast() const { return protocol == Protocol::E131 && ip == "multicast"; }
    std::size_t channels() const { return colourOrder.size(); } // bytes per pixel
};

struct BridgeEntry {
    std::vector<OutputEntry> outputs;
    std::string atEnd = "black"; // or "hold", or a colour
    std::int32_t stopAfter = 0;  // seconds; 0: never
    std::int32_t framesPerSecond = 50;
};

// The most pixels that one packet carries. A WLED receiver has two kinds of packet: one for strips
// that fit into it, which begins with pixel 0, and one with fewer pixels that can begin anywhere.
std::size_t pixelsPerPacket(const OutputEntry &output, std::size_t pixels);

// How an output's pixels are sent, and which limits that meets: "600 pixels in 2 packets of at most
// 480", with the universes for protocols that have them.
std::string describePackets(const OutputEntry &output, std::size_t pixels);

// "output 0 (DDP to 192.0.2.40:4048)"
std::string nameOutput(const OutputEntry &output);

// For each output, why it cannot be driven, if so: an address that does not parse, a device that
// does not exist or has no panels, pixels beyond the protocol's last, or pixels (for protocols with
// universes: universes) that an earlier output to the same address and port has. Without places.
std::vector<std::optional<Problem>> findOutputProblems(const Document &document);

} // namespace config
