#include "tools/config/advice.h"

#include "tools/config/flashes.h"
#include "tools/config/modes.h"
#include "tools/config/pointer.h"
#include "tools/lights/panelArea.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <map>

namespace config {

Unsound::Unsound(const std::vector<Problem> &errors) {
    for (const auto &error : errors) {
        isEverything = isEverything || error.pointer.empty();
        pointers.insert(error.pointer);
    }
}

bool Unsound::covers(const std::string &pointer) const {
    if (isEverything)
        return true;
    for (auto end = pointer.size(); end != 0 && end != std::string::npos;
         end = pointer.rfind('/', end - 1))
        if (pointers.contains(pointer.substr(0, end)))
            return true;
    return false;
}

namespace {

// One device's address: family, bytes and port.
using Endpoint = std::pair<std::array<unsigned char, 17>, int>;

class Adviser {
public:
    Adviser(const Document &documentToRead, const std::optional<ScreenSize> &screenToFill,
            const Unsound &parts)
        : document(documentToRead), screen(screenToFill), unsound(parts) {}

    std::vector<Problem> problems;

    void adviseOnAll() {
        adviseOnFlashes();
        if (document.devices.empty())
            warn("/devices", "found no devices, without which nothing can be mirrored",
                 "add a device; mirrorctl layout makes some");
        for (std::size_t i = 0; i < document.devices.size() && !isFull(); ++i)
            adviseOnDevice(document.devices[i], stepInto("/devices", i));
    }

private:
    void adviseOnFlashes();
    void adviseOnDevice(const DeviceEntry &device, const std::string &pointer);
    void adviseOnAddress(const DeviceEntry &device, const std::string &pointer);
    void adviseOnSize(const DeviceEntry &device, const std::string &pointer);
    void adviseOnCount(const DeviceEntry &device, const std::string &pointer);
    void adviseOnIdentifiers(const DeviceEntry &device, const std::string &panels);
    void adviseOnPlaces(const DeviceEntry &device, const std::string &panels);

    bool isFull() const { return problems.size() >= mostProblems; }

    void warn(const std::string &pointer, const std::string &message, const std::string &remedy) {
        if (!isFull() && !unsound.covers(pointer))
            problems.push_back({pointer, message, remedy, {}, Severity::warning});
    }

    const Document &document;
    const std::optional<ScreenSize> &screen;
    const Unsound &unsound;
    std::map<Endpoint, std::string> devices; // the pointer to the first at each address
};

} // namespace

void Adviser::adviseOnFlashes() {
    const double flashes = mostFlashes(document.mode);
    bool hasPanels = false;
    for (const auto &device : document.devices)
        hasPanels = hasPanels || !device.panels.empty();
    if (flashes <= harmlessFlashes || !hasPanels || unsound.covers("/mode"))
        return;
    char rate[32];
    std::snprintf(rate, sizeof rate, "%.1f", flashes);
    problems.push_back(
        {"/mode",
         std::string(modeName(document.mode)) + " mode lets the whole wall flash up to " + rate +
             " times a second when the screen does; more than 3 flashes a second can set off "
             "seizures in some people",
         "warn whoever will see the wall; for pictures that flash choose palette mode (3), whose "
         "panels hold each colour for a second or more",
         {},
         Severity::caution});
}

void Adviser::adviseOnAddress(const DeviceEntry &device, const std::string &pointer) {
    Endpoint endpoint{{}, device.port()};
    in6_addr v6;
    in_addr v4;
    if (inet_pton(AF_INET, device.ip.c_str(), &v4) == 1) {
        endpoint.first[0] = 4;
        std::copy_n(reinterpret_cast<const unsigned char *>(&v4), sizeof v4,
                    endpoint.first.begin() + 1);
    } else if (inet_pton(AF_INET6, device.ip.c_str(), &v6) == 1) {
        endpoint.first[0] = 6;
        std::copy_n(reinterpret_cast<const unsigned char *>(&v6), sizeof v6,
                    endpoint.first.begin() + 1);
        if (IN6_IS_ADDR_LINKLOCAL(&v6))
            warn(pointer + "/ip",
                 "found the link-local address " + device.ip +
                     ", which does not say on which network interface the light is; it may be "
                     "looked for on another one",
                 "write the light's IPv4 address, or another of its IPv6 addresses");
    } else {
        return; // an error, and told as one
    }
    if (unsound.covers(pointer + "/ip") || unsound.covers(pointer + "/controlVersion"))
        return;
    const auto [first, isNew] = devices.emplace(endpoint, pointer);
    if (!isNew)
        warn(pointer + "/ip",
             "found " + device.ip + " again, the address of " + first->second +
                 "; one light would be told the colours of both",
             "give each device its own address, or join their panels in one device");
}

static std::string shown(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

void Adviser::adviseOnSize(const DeviceEntry &device, const std::string &pointer) {
    const double half = halfSide(device);
    if (unsound.covers(pointer + "/shapeType"))
        return;
    if (half < 1.0)
        warn(pointer + "/scaleFactor",
             "expected " + shown(3.0 / baseSize(device)) + " or more for this shapeType, found " +
                 shown(device.scaleFactor) +
                 ", with which the panels take their colour from a single pixel",
             "1 makes the area 100 pixels wide for shapeType 0, and 66 for any other");
    else if (screen && (2.0 * half > screen->width || 2.0 * half > screen->height))
        warn(pointer + "/scaleFactor",
             "found panels whose area is larger than the screen (" + std::to_string(screen->width) +
                 " x " + std::to_string(screen->height) + ")",
             "choose a smaller number; 1 makes the area 100 pixels wide for shapeType 0, and 66 "
             "for any other");
}

void Adviser::adviseOnCount(const DeviceEntry &device, const std::string &pointer) {
    const bool isNarrow = device.controlVersion == 1;
    const std::size_t panels = device.panels.size();
    if (panels == 0)
        warn(pointer + "/panels", "found no panels; the device stays dark",
             "add its panels, or take the device away");
    // What one UDP datagram holds over IPv4, less its header of two bytes, in records of eight.
    constexpr std::size_t mostWide = (65507 - 2) / 8;
    constexpr std::size_t mostNarrow = 255;
    const std::size_t most = isNarrow ? mostNarrow : mostWide;
    if (panels > most && !unsound.covers(pointer + "/controlVersion"))
        warn(pointer + "/panels",
             "expected at most " + std::to_string(most) + " panels, found " +
                 std::to_string(panels) +
                 (isNarrow ? "; controlVersion 1 counts them in 8 bits"
                           : "; the datagram would be too large to be sent"),
             "share the panels out to several devices");
}

void Adviser::adviseOnIdentifiers(const DeviceEntry &device, const std::string &panels) {
    const std::int32_t mask = device.controlVersion == 1 ? 0xFF : 0xFFFF;
    std::map<std::int32_t, std::size_t> seen; // by the identifier that is sent
    for (std::size_t i = 0; i < device.panels.size() && !isFull(); ++i) {
        const std::string pointer = stepInto(panels, i) + "/panelID";
        if (unsound.covers(pointer))
            continue;
        const std::int32_t id = device.panels[i].panelID;
        const std::int32_t sent = id & mask;
        const std::string range = "0 to " + std::to_string(mask);
        if (sent != id)
            warn(pointer,
                 "expected an identifier from " + range + ", found " + std::to_string(id) +
                     ", which is sent as " + std::to_string(sent),
                 device.controlVersion == 1 ? "use controlVersion 2, if the device understands it"
                                            : "use the device's own identifiers");
        const auto [first, isNew] = seen.emplace(sent, i);
        if (!isNew)
            warn(pointer,
                 "found identifier " + std::to_string(sent) + " again, that of panel " +
                     std::to_string(first->second) + " of this device",
                 "give each panel of a device its own identifier");
    }
}

void Adviser::adviseOnPlaces(const DeviceEntry &device, const std::string &panels) {
    if (!screen)
        return;
    const auto look = [&](std::int32_t at, std::uint32_t size, const std::string &pointer) {
        if (at < 0 || static_cast<std::uint32_t>(at) >= size)
            warn(pointer,
                 "expected a place on the screen, 0 to " + std::to_string(size - 1) + ", found " +
                     std::to_string(at) + "; the panel takes its colour from the screen's edge",
                 "put the panel's centre on the screen (" + std::to_string(screen->width) + " x " +
                     std::to_string(screen->height) + ")");
    };
    for (std::size_t i = 0; i < device.panels.size() && !isFull(); ++i) {
        const std::string pointer = stepInto(panels, i);
        look(device.panels[i].centroidX, screen->width, pointer + "/centroidX");
        look(device.panels[i].centroidY, screen->height, pointer + "/centroidY");
    }
}

void Adviser::adviseOnDevice(const DeviceEntry &device, const std::string &pointer) {
    adviseOnAddress(device, pointer);
    adviseOnSize(device, pointer);
    adviseOnCount(device, pointer);
    if (!unsound.covers(pointer + "/controlVersion"))
        adviseOnIdentifiers(device, pointer + "/panels");
    adviseOnPlaces(device, pointer + "/panels");
}

std::vector<Problem> advise(const Document &document, const std::optional<ScreenSize> &screen,
                            const Unsound &unsound) {
    Adviser adviser(document, screen, unsound);
    adviser.adviseOnAll();
    return std::move(adviser.problems);
}

} // namespace config
