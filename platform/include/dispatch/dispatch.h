// The part of libdispatch that the library uses, for machines without Apple's headers.
// Names, types and values are those of Apple's public documentation.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef struct dispatch_queue_s *dispatch_queue_t;
typedef struct dispatch_queue_attr_s *dispatch_queue_attr_t;

// Creates a serial queue when `attr` is null. The label is copied.
dispatch_queue_t dispatch_queue_create(const char *label, dispatch_queue_attr_t attr);

#ifdef __cplusplus
}
#endif
