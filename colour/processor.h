// What the processor can do beyond what every one of its kind can.
#pragma once

#ifdef __x86_64__

// Whether it has AVX2 and the system keeps the wide registers.
bool hasAVX2();

#endif
