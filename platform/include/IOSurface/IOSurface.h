// The part of IOSurface that the library uses, for machines without Apple's headers.
// Names, types and values are those of Apple's public documentation.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __IOSurface *IOSurfaceRef;
typedef int kern_return_t;
typedef kern_return_t IOReturn;

typedef uint32_t IOSurfaceLockOptions;
enum { kIOSurfaceLockReadOnly = 0x00000001 };

// `seed` may be null. Both return 0 on success.
IOReturn IOSurfaceLock(IOSurfaceRef buffer, IOSurfaceLockOptions options, uint32_t *seed);
IOReturn IOSurfaceUnlock(IOSurfaceRef buffer, IOSurfaceLockOptions options, uint32_t *seed);

// The first byte of the pixels; valid while the surface is locked.
void *IOSurfaceGetBaseAddress(IOSurfaceRef buffer);

#ifdef __cplusplus
}
#endif
