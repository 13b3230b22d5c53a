// What Core Graphics has besides platform/include, for mirrorctl alone: CGWindow.h, since macOS 11.
#pragma once

extern "C" bool CGPreflightScreenCaptureAccess(void);
