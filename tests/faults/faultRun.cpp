#include "tests/faults/faultRun.h"

#include "tests/platform/processUsage.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace test {

bool fullFaults() {
    const char *wish = std::getenv("MIRROR_FAULTS");
    return wish != nullptr && std::string(wish) == "full";
}

void tellFigure(const std::string &text) {
    std::fprintf(stderr, "figure: %s\n", text.c_str());
}

Holdings holdings() {
    std::size_t size = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    const struct mallinfo2 heap = mallinfo2();
    return {openDescriptors(), threads(), heap.uordblks + heap.hblkhd,
            resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
}

std::string FaultRun::document(int mode) const {
    return documentOf(displayIDs().at(0), mode, {light});
}

void FaultRun::start() {
    ASSERT_EQ(configure(document()), 1);
    ASSERT_EQ(startMirror(), 1);
}

Datagram FaultRun::plainDatagram(std::uint32_t colour) const {
    return matchDatagram(light, plain(100, 100, colour));
}

testing::AssertionResult FaultRun::showsPlain(std::uint32_t colour) {
    const Datagram wanted = plainDatagram(colour);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < deadline) {
        const std::optional<Datagram> got = receiver.next();
        if (!got)
            return testing::AssertionFailure() << "nothing arrived";
        if (*got == wanted)
            return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "another colour to the end";
}

} // namespace test
