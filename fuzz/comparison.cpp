// Compares any two sequences of datagrams: each datagram is accounted for, equal sequences compare
// equal, and differences are found.
#include "fuzz/require.h"
#include "tools/recording/compareRecordings.h"

#include <fuzzer/FuzzedDataProvider.h>

using fuzz::require;
using namespace panelwall;

namespace {

using Sequence = std::vector<RecordedDatagram>;

Sequence sequence(FuzzedDataProvider &input) {
    Sequence made;
    auto time = std::chrono::microseconds::zero();
    const int length = input.ConsumeIntegralInRange(0, 200);
    for (int i = 0; i < length && input.remaining_bytes() > 0; ++i) {
        time += std::chrono::microseconds(input.ConsumeIntegral<std::uint8_t>());
        const std::string bytes =
            input.ConsumeBytesAsString(input.ConsumeIntegralInRange<std::size_t>(0, 2));
        made.push_back({0, time, std::vector<std::uint8_t>(bytes.begin(), bytes.end())});
    }
    return made;
}

bool isAlike(const Sequence &left, const Sequence &right) {
    if (left.size() != right.size())
        return false;
    for (std::size_t i = 0; i < left.size(); ++i)
        if (left[i].bytes != right[i].bytes)
            return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const Layout layout = input.ConsumeBool() ? Layout::Narrow : Layout::Wide;
    const bool together = input.ConsumeBool();
    std::array<Sequence, 2> sequences{sequence(input), {}};
    sequences[second] = input.ConsumeBool() ? sequences[first] : sequence(input);

    DeviceComparison comparison(layout);
    std::array<std::size_t, 2> taken{};
    std::array<bool, 2> ended{};
    while (!ended[first] || !ended[second]) {
        Side side = together && taken[first] > taken[second] ? second : first;
        if (ended[side])
            side = other(side);
        if (taken[side] < sequences[side].size()) {
            comparison.take(side, sequences[side][taken[side]++]);
        } else {
            comparison.end(side);
            ended[side] = true;
        }
    }
    const DeviceFindings &found = comparison.findings();
    require(comparison.held() == 0, "nothing is left over");
    for (const Side side : bothSides)
        require(found.same + found.changed + found.only[side] == sequences[side].size(),
                "every datagram is accounted for");
    require(found.differs() == !isAlike(sequences[first], sequences[second]),
            "what differs is found");
    if (found.firstDifference[first] && found.firstDifference[second])
        require(!describeDifference(layout, found.firstDifference[first]->bytes,
                                    found.firstDifference[second]->bytes)
                     .empty(),
                "a difference is told");
    return 0;
}
