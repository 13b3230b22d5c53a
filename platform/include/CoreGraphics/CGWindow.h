// What mirrorctl alone uses of CoreGraphics. Only macOS has it.
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

// Whether this process may record the screen. Asks nobody. Since macOS 11.
bool CGPreflightScreenCaptureAccess(void);

#ifdef __cplusplus
}
#endif
