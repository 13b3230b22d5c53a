#include "colour/processor.h"

#ifdef __x86_64__
#include <cpuid.h>

// Uses cpuid directly: the compiler's built-in check needs a library that not every system has.
bool hasAVX2() {
    unsigned a, b, c, d;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_OSXSAVE) == 0 || (c & bit_AVX) == 0)
        return false;
    unsigned low, high;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    constexpr unsigned vectorState = 1u << 1 | 1u << 2; // SSE and AVX registers
    if ((low & vectorState) != vectorState)
        return false;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_AVX2) != 0;
}
#endif
