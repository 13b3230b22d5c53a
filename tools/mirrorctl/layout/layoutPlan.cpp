#include "tools/mirrorctl/layout/layoutPlan.h"

#include "tools/lights/address.h"
#include "tools/lights/datagram.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace mirrorctl {

using lights::wholeNumber;
using Point = std::pair<std::int32_t, std::int32_t>; // x and y

std::optional<Shape> parseShape(const std::string &text) {
    constexpr std::string_view strip = "strip:";
    if (text.starts_with(strip)) {
        const auto length = wholeNumber(std::string_view(text).substr(strip.size()), maxPanels);
        return length ? std::optional(Shape{0, 0, *length}) : std::nullopt;
    }
    const auto x = text.find('x');
    if (x == std::string::npos)
        return std::nullopt;
    const auto rows = wholeNumber(std::string_view(text).substr(0, x), maxPanels);
    const auto columns = wholeNumber(std::string_view(text).substr(x + 1), maxPanels);
    if (!rows || !columns || std::size_t{*rows} * *columns > maxPanels)
        return std::nullopt;
    return Shape{*rows, *columns};
}

// The side of a panel's area, in pixels.
static double sideOf(const LayoutPlan &plan) {
    const double width = plan.screen.width;
    const double height = plan.screen.height;
    if (plan.shape.rows > 0)
        return std::min(width / static_cast<double>(plan.shape.columns),
                        height / static_cast<double>(plan.shape.rows));
    // The areas' centres lie on a rectangle half a side inside the screen's edges.
    const double around = 2.0 * (width + height) / static_cast<double>(plan.shape.length + 4);
    return std::min(around, std::min(width, height) / 2.0);
}

// Rounded down, so that areas do not overlap.
static double scaleOf(double side) {
    return std::floor(side / 2.0 * 3.0 / lights::wideBase * 1000.0) / 1000.0;
}

static Point gridPoint(const LayoutPlan &plan, std::size_t index) {
    const auto middle = [](std::size_t i, std::size_t count, std::uint32_t size) {
        return static_cast<std::int32_t>((static_cast<double>(i) + 0.5) * size /
                                         static_cast<double>(count));
    };
    return {middle(index % plan.shape.columns, plan.shape.columns, plan.screen.width),
            middle(index / plan.shape.columns, plan.shape.rows, plan.screen.height)};
}

static Point stripPoint(const LayoutPlan &plan, std::size_t index) {
    const double inset = sideOf(plan) / 2.0;
    const double width = plan.screen.width - 2.0 * inset;
    const double height = plan.screen.height - 2.0 * inset;
    double way = (static_cast<double>(index) + 0.5) * 2.0 * (width + height) /
                 static_cast<double>(plan.shape.length);
    double x = 0.0;
    double y = 0.0;
    if (way < width) {
        x = way;
    } else if ((way -= width) < height) {
        x = width;
        y = way;
    } else if ((way -= height) < width) {
        x = width - way;
        y = height;
    } else {
        y = height - (way - width);
    }
    return {static_cast<std::int32_t>(inset + x), static_cast<std::int32_t>(inset + y)};
}

bool addBridge(LayoutPlan &plan, const std::string &url) {
    const auto scheme = url.find("://");
    const auto protocol = config::protocolNamed(url.substr(0, scheme));
    if (scheme == std::string::npos || !protocol)
        return false;
    const config::ProtocolTraits &traits = config::traitsOf(*protocol);
    config::OutputEntry output;
    output.protocol = *protocol;
    output.port = traits.port;
    output.universe = traits.firstUniverse;

    std::string host = url.substr(scheme + 3);
    // Cuts what follows the last separator off the host; false if it is no number up to `largest`.
    const auto cut = [&host](char separator, std::int32_t largest, std::int32_t &number) {
        const auto at = host.rfind(separator);
        if (at == std::string::npos || host.find(']', at) != std::string::npos)
            return true;
        const std::string text = host.substr(at + 1);
        const auto read = wholeNumber(text, static_cast<std::uint32_t>(largest));
        if (!read && text != "0")
            return false;
        number = static_cast<std::int32_t>(read.value_or(0));
        host.erase(at);
        return true;
    };
    if (!cut('/', traits.lastUniverse, output.universe) || !cut(':', 65535, output.port) ||
        output.port == 0 || output.universe < traits.firstUniverse)
        return false;
    if (host.starts_with('[') && host.ends_with(']'))
        host = host.substr(1, host.size() - 2);
    output.ip = host;
    if (!output.isMulticast() && lights::findAddressError(host))
        return false;

    const auto isTaken = [&plan](const std::string &ip) {
        return std::find(plan.addresses.begin(), plan.addresses.end(), ip) != plan.addresses.end();
    };
    std::string listening = "127.0.0.1";
    for (int last = 2; isTaken(listening) && last < 255; ++last)
        listening = "127.0.0." + std::to_string(last);
    output.device = static_cast<std::int32_t>(plan.addresses.size());
    plan.addresses.push_back(listening);
    plan.outputs.push_back(output);
    return true;
}

std::string problemOf(const LayoutPlan &plan) {
    const std::size_t panels = plan.shape.panels();
    const std::size_t devices = plan.addresses.size();
    if (devices > panels)
        return "there are more addresses than panels";
    const std::size_t most = lights::maxPanels(lights::layoutOf(plan.controlVersion));
    if (panels > most * devices)
        return "a device of this control version takes " + std::to_string(most) +
               " panels at most; for " + std::to_string(panels) + " name " +
               std::to_string((panels + most - 1) / most) + " addresses";
    // The area must contain more than its centre pixel.
    if (sideOf(plan) < 4.0)
        return "panels would be smaller than 4 pixels";
    return {};
}

std::vector<config::DeviceEntry> layOut(const LayoutPlan &plan) {
    std::vector<config::DeviceEntry> list;
    const std::size_t panels = plan.shape.panels();
    const std::size_t devices = plan.addresses.size();
    for (std::size_t d = 0; d < devices; ++d) {
        auto &device = list.emplace_back(config::DeviceEntry{
            plan.addresses[d], plan.controlVersion, 0, scaleOf(sideOf(plan)), {}});
        for (std::size_t i = d * panels / devices; i < (d + 1) * panels / devices; ++i) {
            const auto [x, y] = plan.shape.rows > 0 ? gridPoint(plan, i) : stripPoint(plan, i);
            const auto number = static_cast<std::int32_t>(device.panels.size() + 1);
            device.panels.push_back({number, x, y});
        }
    }
    return list;
}

} // namespace mirrorctl
