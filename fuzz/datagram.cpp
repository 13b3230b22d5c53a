// Sends any bytes to the wall as datagrams: each is well-formed and shown, or counted as malformed
// with a reason.
#include "fuzz/require.h"
#include "fuzz/seldom.h"
#include "tools/panelwall/statusText.h"
#include "tools/wall/wall.h"

#include <fuzzer/FuzzedDataProvider.h>

using fuzz::require;
using namespace panelwall;

namespace {

const config::Document &document() {
    static const config::Document made = [] {
        config::Document document;
        for (const std::int32_t version : {1, 2}) {
            config::DeviceEntry device;
            device.ip = "127.0.0.1";
            device.controlVersion = version;
            device.scaleFactor = 1.0;
            for (const std::int32_t id : {0, 1, 3, 258, 300, -1})
                device.panels.push_back({id, id, 100});
            document.devices.push_back(device);
        }
        return document;
    }();
    return made;
}

void requireSound(Layout layout, const lights::Decoding &decoding, std::size_t size) {
    const std::size_t header = layout == Layout::Narrow ? 1 : 2;
    const std::size_t record = layout == Layout::Narrow ? 7 : 8;
    if (decoding.malformed.empty())
        require(size == header + record * decoding.records.size(), "records fill the datagram");
    else
        require(decoding.records.empty(), "a malformed datagram has no records");
    require(decoding.malformed.find('\n') == std::string::npos, "a reason is one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Wall wall(document(), std::chrono::milliseconds(input.ConsumeIntegralInRange(0, 60'000)));
    Clock::time_point now{std::chrono::hours(1)};
    std::uint64_t heard[2] = {};
    while (input.remaining_bytes() > 0) {
        const std::size_t device = input.ConsumeIntegralInRange<std::size_t>(0, 1);
        now += std::chrono::milliseconds(input.ConsumeIntegral<std::uint16_t>());
        const std::string text = input.ConsumeRandomLengthString(600);
        const std::span bytes(reinterpret_cast<const std::uint8_t *>(text.data()), text.size());
        const Layout layout = wall.devices()[device].layout;
        requireSound(layout, lights::decode(layout, bytes), bytes.size());

        const std::uint64_t malformed = wall.devices()[device].malformed;
        wall.receive(device, bytes, now);
        const WallDevice &after = wall.devices()[device];
        require(after.datagrams == ++heard[device], "every datagram counts");
        require(after.malformed == malformed ||
                    (after.malformed == malformed + 1 && !after.lastMalformed.empty()),
                "a malformed one counts once, with its reason");
    }
    if (!fuzz::isSeldom(data, size, 16))
        return 0;
    for (const WallDevice &device : wall.devices())
        for (const WallPanel &panel : device.panels)
            panel.shownAt(now + std::chrono::milliseconds(1));
    deviceLines(wall, now, ReasonPlace::SameLine);
    describeSilence(wall, 0, now, now + std::chrono::hours(2));
    return 0;
}
