#include "tools/mirrorctl/snapshotTable.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace mirrorctl {

static std::string addressOf(const config::DeviceEntry &device) {
    const bool six = device.ip.find(':') != std::string::npos;
    return (six ? "[" + device.ip + "]" : device.ip) + ":" + std::to_string(device.port());
}

void printSnapshot(const std::vector<SentFrame> &frames, const std::vector<std::size_t> &shares,
                   const std::vector<config::DeviceEntry> &devices) {
    const bool coloured = showsColours(STDOUT_FILENO);
    std::size_t widest = sizeof "address" - 1;
    for (const auto &device : devices)
        widest = std::max(widest, addressOf(device).size());
    const int width = static_cast<int>(widest);

    printf("%6s  %-*s  %5s  colour\n", "device", width, "address", "panel");
    std::size_t next = 0;
    for (std::size_t d = 0; d < devices.size(); ++d) {
        const std::string address = addressOf(devices[d]);
        const SentFrame *frame =
            next < shares.size() && shares[next] == d ? &frames[next++] : nullptr;
        if (!frame || frame->records.empty())
            printf("%6zu  %-*s  %5s  %s\n", d, width, address.c_str(), "-",
                   frame ? "no panels" : "nothing in this frame");
        else
            for (const SentRecord &record : frame->records)
                printf("%6zu  %-*s  %5u  %s%s\n", d, width, address.c_str(), record.id,
                       coloured ? (swatch(record.colour) + " ").c_str() : "",
                       hexText(record.colour).c_str());
    }
}

} // namespace mirrorctl
