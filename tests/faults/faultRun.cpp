#include "tests/faults/faultRun.h"

#include "tests/platform/processUsage.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace test {

bool fullFaults() {
    const char *value = std::getenv("MIRROR_FAULTS");
    return value != nullptr && std::string(value) == "full";
}

void printMeasurement(const std::string &text) {
    std::fprintf(stderr, "figure: %s\n", text.c_str());
}

ResourceUsage resourceUsage() {
    std::size_t size = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    const struct mallinfo2 heap = mallinfo2();
    return {openDescriptors(), threads(), heap.uordblks + heap.hblkhd,
            resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
}

} // namespace test
