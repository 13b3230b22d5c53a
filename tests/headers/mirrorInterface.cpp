#include "mirror/mirrorInterface.h"

static_assert(sizeof(getDisplays(nullptr, 0)) == sizeof(int) &&
              sizeof(getSizeOfStreamFrameJson()) == sizeof(int) &&
              sizeof(getStreamFrameJson(nullptr)) == sizeof(int) &&
              sizeof(captureCurrentStreamFrames()) == sizeof(int) &&
              sizeof(getPalette(nullptr)) == sizeof(int) &&
              sizeof(setMirrorConfig(nullptr)) == sizeof(int) &&
              sizeof(startMirror()) == sizeof(int) && sizeof(stopMirror()) == sizeof(int));
