// Optional features of the processor.
#pragma once

#ifdef __x86_64__

// Whether the processor has AVX2 and the system saves the wide registers.
bool hasAVX2();

#endif
