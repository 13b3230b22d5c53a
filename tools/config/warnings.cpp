#include "tools/config/modes.h"
#include "tools/config/tree.h"
#include "tools/lights/address.h"
#include "tools/lights/datagram.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <map>

namespace config {

using lights::format;

FaultyParts::FaultyParts(const std::vector<Problem> &errors) {
    for (const auto &error : errors)
        pointers.insert(error.pointer);
}

bool FaultyParts::include(const std::string &pointer) const {
    for (std::string part = pointer;; part.erase(part.rfind('/')))
        if (pointers.contains(part) || part.empty())
            return pointers.contains(part);
}

namespace {

struct WarningList {
    const FaultyParts &faulty;
    std::vector<Problem> problems = {};
    std::map<std::string, std::string> endpoints = {}; // pointer to each one's first device

    bool isFull() const { return problems.size() >= maxProblems; }

    void add(const std::string &pointer, const std::string &message, const std::string &fix,
             Severity severity = Severity::Warning) {
        if (!isFull() && !faulty.include(pointer))
            problems.push_back({pointer, message, fix, {}, severity});
    }
};

} // namespace

static std::string shown(const ScreenSize &size) {
    return format("%u x %u", size.width, size.height);
}

static void warnOfFlashes(const Document &document, WarningList &list) {
    const double flashes = maxFlashes(document.mode);
    const bool hasPanels = std::any_of(document.devices.begin(), document.devices.end(),
                                       [](const auto &device) { return !device.panels.empty(); });
    if (flashes > harmlessFlashes && hasPanels)
        list.add(
            "/mode",
            format("%s mode lets the whole wall flash up to %.1f times a second when the screen "
                   "does; more than 3 flashes a second can cause seizures in some people",
                   modeName(document.mode), flashes),
            "warn anyone who will see the wall; for pictures that flash choose palette mode (3), "
            "whose panels hold each colour for a second or more",
            Severity::Caution);
}

static void warnOfAddress(const DeviceEntry &device, const std::string &pointer,
                          WarningList &list) {
    const auto endpoint = lights::parseEndpoint(device.ip, device.port());
    if (!endpoint)
        return; // reported elsewhere, as an error
    if (endpoint->any.sa_family == AF_INET6 && IN6_IS_ADDR_LINKLOCAL(&endpoint->v6.sin6_addr))
        list.add(pointer + "/ip",
                 "found the link-local address " + device.ip +
                     ", which does not say on which network interface the light is; it may be "
                     "looked for on another one",
                 "write the light's IPv4 address, or another of its IPv6 addresses");
    if (list.faulty.include(pointer + "/ip") || list.faulty.include(pointer + "/controlVersion"))
        return;
    const auto [first, isNew] = list.endpoints.emplace(endpoint->bytes(), pointer);
    if (!isNew)
        list.add(pointer + "/ip",
                 "found " + device.ip + " again, the address of " + first->second +
                     "; one light would be told the colours of both",
                 "give each device its own address, or join their panels in one device");
}

static void warnOfSize(const DeviceEntry &device, const std::string &pointer,
                       const std::optional<ScreenSize> &screen, WarningList &list) {
    const double half = halfSide(device);
    if (list.faulty.include(pointer + "/shapeType"))
        return;
    if (half < 1.0)
        list.add(pointer + "/scaleFactor",
                 format("expected %g or more for this shapeType, found %g, with which the panels "
                        "take their colour from a single pixel",
                        3.0 / baseSize(device), device.scaleFactor),
                 "1 makes the area 100 pixels wide for shapeType 0, and 66 for any other");
    else if (screen && (2.0 * half > screen->width || 2.0 * half > screen->height))
        list.add(pointer + "/scaleFactor",
                 "found panels whose area is larger than the screen (" + shown(*screen) + ")",
                 "choose a smaller number; 1 makes the area 100 pixels wide for shapeType 0, and "
                 "66 for any other");
}

static void warnOfCount(const DeviceEntry &device, const std::string &pointer, WarningList &list) {
    const std::size_t panels = device.panels.size();
    if (panels == 0)
        list.add(pointer + "/panels", "found no panels; the device stays dark",
                 "add its panels, or take the device away");
    const lights::Layout layout = lights::layoutOf(device.controlVersion);
    const std::size_t most = lights::maxPanels(layout);
    if (panels > most && !list.faulty.include(pointer + "/controlVersion"))
        list.add(pointer + "/panels",
                 format("expected at most %zu panels, found %zu", most, panels) +
                     (layout == lights::Layout::Narrow
                          ? "; controlVersion 1 counts them in 8 bits"
                          : "; the datagram would be too large to be sent"),
                 "share the panels out to several devices");
}

static void warnOfIdentifiers(const DeviceEntry &device, const std::string &panels,
                              WarningList &list) {
    const lights::Layout layout = lights::layoutOf(device.controlVersion);
    const int largest = lights::wireId(layout, -1); // all bits set
    std::map<std::int32_t, std::size_t> seen;       // first panel of each sent identifier
    for (std::size_t i = 0; i < device.panels.size() && !list.isFull(); ++i) {
        const std::string pointer = stepInto(panels, i) + "/panelID";
        if (list.faulty.include(pointer))
            continue;
        const std::int32_t id = device.panels[i].panelID;
        const std::int32_t sent = lights::wireId(layout, id);
        if (sent != id)
            list.add(pointer,
                     format("expected an identifier from 0 to %d, found %d, which is sent as %d",
                            largest, id, sent),
                     layout == lights::Layout::Narrow
                         ? "use controlVersion 2, if the device understands it"
                         : "use the device's own identifiers");
        const auto [first, isNew] = seen.emplace(sent, i);
        if (!isNew)
            list.add(pointer,
                     format("found identifier %d again, that of panel %zu of this device", sent,
                            first->second),
                     "give each panel of a device its own identifier");
    }
}

static void warnOfPlaces(const DeviceEntry &device, const std::string &panels,
                         const ScreenSize &screen, WarningList &list) {
    const auto look = [&](std::int32_t at, std::uint32_t size, const std::string &pointer) {
        if (at < 0 || static_cast<std::uint32_t>(at) >= size)
            list.add(pointer,
                     format("expected a place on the screen, 0 to %u, found %d; the panel takes "
                            "its colour from the screen's edge",
                            size - 1, at),
                     "put the panel's centre on the screen (" + shown(screen) + ")");
    };
    for (std::size_t i = 0; i < device.panels.size() && !list.isFull(); ++i) {
        const std::string pointer = stepInto(panels, i);
        look(device.panels[i].centroidX, screen.width, pointer + "/centroidX");
        look(device.panels[i].centroidY, screen.height, pointer + "/centroidY");
    }
}

std::vector<Problem> findWarnings(const Document &document, const std::optional<ScreenSize> &screen,
                                  const FaultyParts &faulty) {
    WarningList list{faulty};
    warnOfFlashes(document, list);
    if (document.devices.empty())
        list.add("/devices", "found no devices, without which nothing can be mirrored",
                 "add a device; mirrorctl layout makes some");
    for (std::size_t i = 0; i < document.devices.size() && !list.isFull(); ++i) {
        const DeviceEntry &device = document.devices[i];
        const std::string pointer = stepInto("/devices", i);
        warnOfAddress(device, pointer, list);
        warnOfSize(device, pointer, screen, list);
        warnOfCount(device, pointer, list);
        if (!faulty.include(pointer + "/controlVersion"))
            warnOfIdentifiers(device, pointer + "/panels", list);
        if (screen)
            warnOfPlaces(device, pointer + "/panels", *screen, list);
    }
    if (document.bridge && !faulty.include("/devices"))
        for (const auto &problem : findOutputProblems(document))
            if (problem)
                list.add(problem->pointer, problem->message, problem->fix);
    return std::move(list.problems);
}

} // namespace config
