#include "tools/wall/deviceEndpoints.h"

#include "tools/lights/text.h"

#include <map>

namespace panelwall {

std::vector<Endpoint> findEndpoints(const config::Document &document,
                                    std::vector<config::Problem> &problems, Reach reach) {
    std::vector<Endpoint> endpoints;
    std::map<std::string, std::size_t, std::less<>> taken;
    for (std::size_t i = 0; i < document.devices.size(); ++i) {
        const config::DeviceEntry &device = document.devices[i];
        const auto report = [&](const std::string &text) {
            problems.push_back({"/devices/" + std::to_string(i) + "/ip",
                                lights::nameDevice(i, device) + ": " + text});
        };
        const auto endpoint = lights::parseEndpoint(device.ip, device.port());
        if (!endpoint)
            report("the address does not parse; write four decimal numbers such as 127.0.0.2, or "
                   "::1");
        else if (reach == Reach::Loopback && !lights::isLoopback(*endpoint))
            report("not a loopback address; the wall listens on this machine only, so give the "
                   "device an address in 127.0.0.0/8, or ::1");
        else if (const auto [earlier, isNew] = taken.emplace(endpoint->bytes(), i); !isNew)
            report("device " + std::to_string(earlier->second) +
                   " has the same address and port; give each device an address of its own, such "
                   "as 127.0.0.2, 127.0.0.3 and so on");
        else
            endpoints.push_back(*endpoint);
    }
    return endpoints;
}

} // namespace panelwall
