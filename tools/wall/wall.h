// The wall: the colour of every panel and what every device has received.
//
// One thread uses it at a time; it has no lock. It uses neither sockets nor screens: the caller
// passes in each device's datagrams and reads the colours to show.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/lights/datagram.h"
#include "tools/wall/arrivalMeter.h"
#include "tools/wall/colourHistory.h"
#include "tools/wall/transition.h"
#include "tools/wall/wallFlashMeter.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace panelwall {

using lights::Colour;
using lights::KnownIds;
using lights::Layout;

struct WallPanel {
    std::int32_t panelID = 0;
    std::int32_t centreX = 0; // screen pixels
    std::int32_t centreY = 0;
    double halfSide = 0.0;        // of the square that mirroring samples, in whole screen pixels
    std::optional<Colour> colour; // of the last record for this panel; none until the first
    std::uint16_t transitionTime = 0; // of that record
    Transition transition;            // to that colour

    // The colour that the panel shows; none until the first record.
    std::optional<Colour> shownAt(Clock::time_point now) const {
        return colour ? std::optional(transition.at(now)) : std::nullopt;
    }
};

struct WallDevice {
    std::string ip;
    int port = 0;
    Layout layout = Layout::Wide;
    std::vector<WallPanel> panels; // in configuration order
    std::size_t firstPanel = 0;    // among the panels of all devices
    KnownIds knownIds;

    std::uint64_t datagrams = 0; // received, including malformed ones
    std::uint64_t malformed = 0;
    std::string lastMalformed; // why the last malformed one was rejected
    ArrivalMeter arrivals;
    std::optional<ColourHistory> history; // after keepHistory()

    std::size_t litPanels() const; // panels that have a colour
};

// How long one unit of transition time lasts.
inline constexpr std::chrono::milliseconds usualTransitionUnit{100};

class Wall {
public:
    // With a unit of 0, panels change at once.
    explicit Wall(const config::Document &document,
                  std::chrono::milliseconds transitionUnit = usualTransitionUnit);

    // Processes a datagram for device number `device` (its index in the document). A malformed one
    // is counted and changes no panel. A record applies to every panel of the device with its
    // identifier, because a device could not tell them apart either; later records win. A panel
    // changes from the colour it shows now to the record's during the record's transition time.
    void receive(std::size_t device, std::span<const std::uint8_t> bytes, Clock::time_point now);

    const std::vector<WallDevice> &devices() const { return allDevices; }

    // From now on every device keeps the colours it was sent within the last minute, in at most
    // `maxRows` rows over all devices, but at least one per device.
    void keepHistory(std::size_t maxRows);

    // Whether any panel is in a transition.
    bool isMoving(Clock::time_point now) const;

    // How often the wall flashes, by the colours sent; panels without a colour count as black.
    const WallFlashMeter &flashes() const { return flashMeter; }

    // When the last datagram arrived, for any device.
    std::optional<Clock::time_point> lastArrival() const;

private:
    std::vector<WallDevice> allDevices;
    std::chrono::milliseconds unit;
    std::vector<Colour> sent; // to all panels
    WallFlashMeter flashMeter;
};

} // namespace panelwall
