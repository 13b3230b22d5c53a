// The surface that a stream's handler receives: a view of the stream's one frame.
#pragma once

#include <IOSurface/IOSurface.h>

struct __IOSurface {
    void *base = nullptr;
};
