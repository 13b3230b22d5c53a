// Stands in for the library where a test needs a failure that the real one cannot be brought to.
// The function that the variable REFUSE names answers its failure value. One display, number 5.
#include "mirror/mirrorInterface.h"

#include <cstdlib>
#include <cstring>

static bool refuses(const char *function) {
    const char *refused = std::getenv("REFUSE");
    return refused && std::strcmp(refused, function) == 0;
}

int getDisplays(char *buffer, int bufferLength) {
    if (refuses("getDisplays"))
        return -1;
    std::strncpy(buffer,
                 refuses("sense") ? "{\"displays\":[{\"displayID\":\"5\"}]}"
                                  : "{\"numDisplays\":1,\"displays\":"
                                    "[{\"displayID\":5,\"width\":640,\"height\":480}]}",
                 static_cast<std::size_t>(bufferLength));
    return 1;
}

int getSizeOfStreamFrameJson(void) {
    return 0;
}
int getStreamFrameJson(char *) {
    return -1;
}
int captureCurrentStreamFrames(void) {
    return -1;
}
int getPalette(char *) {
    return -1;
}
int setMirrorConfig(char *) {
    return refuses("setMirrorConfig") ? 0 : 1;
}
int startMirror(void) {
    return refuses("startMirror") ? -1 : 1;
}
int stopMirror(void) {
    return refuses("stopMirror") ? -1 : 1;
}
