#include "mirror/mirrorInterface.h"
#include "mirror/screenMirrorMac.h"

int getDisplays(char *buffer, int bufferLength) {
    return mirrorManager.getDisplays(buffer, bufferLength);
}

int getSizeOfStreamFrameJson(void) {
    return mirrorManager.getSizeOfStreamFrameJson();
}

int getStreamFrameJson(char *buffer) {
    return mirrorManager.getStreamFrameJson(buffer);
}

int captureCurrentStreamFrames(void) {
    return mirrorManager.captureCurrentStreamFrames();
}

int getPalette(char *buffer) {
    return mirrorManager.getPalette(buffer);
}

int setMirrorConfig(char *json) {
    return mirrorManager.setMirrorConfig(json);
}

int startMirror(void) {
    return mirrorManager.startMirror();
}

int stopMirror(void) {
    return mirrorManager.stopMirror();
}
