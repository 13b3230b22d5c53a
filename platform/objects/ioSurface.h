// A surface as a stream's handler gets it: a view of the stream's one frame.
#pragma once

#include <IOSurface/IOSurface.h>

struct __IOSurface {
    void *base = nullptr;
};
