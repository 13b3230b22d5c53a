#include "mirror/mirrorInterface.h"

int (*const functionsInC[])(void) = {getSizeOfStreamFrameJson, captureCurrentStreamFrames,
                                     startMirror, stopMirror};
int (*const bufferFunctionsInC[])(char *) = {getStreamFrameJson, getPalette, setMirrorConfig};
int (*const displaysInC)(char *, int) = getDisplays;
