// Stands in for the library when a test needs a failure that cannot be provoked in the real one.
// The function that the variable REFUSE names returns its failure value. There is one display,
// number 5; with REFUSE=picture there is also number 6, which has no picture.
#include "mirror/mirrorInterface.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <poll.h>
#include <string>
#include <unistd.h>

static bool refuses(const char *function) {
    const char *refused = std::getenv("REFUSE");
    return refused && std::strcmp(refused, function) == 0;
}

// The number of frames sent, and whether getPalette() has been called.
static int framesSent = 0;
static bool isAsked = false;

// The screen is yellow. With REFUSE=promptness it is seen only after more than five frames; with
// REFUSE=initiative, only after getPalette() has been called.
static bool isSeen() {
    return refuses("initiative") ? isAsked : !refuses("promptness") || framesSent > 5;
}

int getDisplays(char *buffer, int bufferLength) {
    if (refuses("getDisplays"))
        return -1;
    const char *displays =
        R"({"numDisplays":1,"displays":[{"displayID":5,"width":640,"height":480}]})";
    if (refuses("picture"))
        displays = R"({"numDisplays":2,"displays":[{"displayID":5,"width":640,"height":480},)"
                   R"({"displayID":6,"width":0,"height":0}]})";
    else if (refuses("sense"))
        displays = R"({"displays":[{"displayID":"5"}]})";
    std::strncpy(buffer, displays, static_cast<std::size_t>(bufferLength));
    return 1;
}

// A frame for panel 17. With REFUSE=wholeness, a frame for panels 17 and 18; in the first such
// frame only panel 18 shows the screen.
static std::string sentText() {
    if (refuses("frame sense"))
        return R"({"numDevices":1,"devices":[{"animData":"1 17"}]})";
    const char *records = isSeen() ? "1 17 1 255 255 0 0 5" : "1 17 1 0 0 0 0 5";
    if (refuses("wholeness"))
        records = framesSent == 1 ? "2 17 1 0 0 0 0 5 18 1 255 255 0 0 5"
                                  : "2 17 1 255 255 0 0 5 18 1 255 255 0 0 5";
    return R"({"numDevices":1,"devices":[{"ip":"127.0.58.9","animData":")" + std::string(records) +
           R"("}]})";
}

int getSizeOfStreamFrameJson(void) {
    return refuses("getSizeOfStreamFrameJson") ? -1 : static_cast<int>(sentText().size());
}
int getStreamFrameJson(char *buffer) {
    if (refuses("getStreamFrameJson"))
        return -1;
    sentText().copy(buffer, sentText().size());
    return 0;
}
int captureCurrentStreamFrames(void) {
    if (refuses("interruption")) {
        kill(getpid(), SIGINT);
        return -1;
    }
    if (!refuses("captureCurrentStreamFrames")) {
        ++framesSent;
        return 0;
    }
    poll(nullptr, 0, 1010); // as long as the library waits for a frame
    return -1;
}
int getPalette(char *buffer) {
    if (refuses("getPalette"))
        return -1;
    isAsked = true;
    const char *palette = R"({"palette":[{"R":0,"G":0,"B":0}]})";
    if (refuses("palette sense"))
        palette = R"({"palette":[{"R":256,"G":0,"B":0}]})";
    else if (isSeen())
        palette = R"({"palette":[{"R":255,"G":255,"B":0}]})";
    std::strncpy(buffer, palette, 512);
    return 0;
}
int setMirrorConfig(char *) {
    if (refuses("silence"))
        puts("The library talks.");
    return refuses("setMirrorConfig") ? 0 : 1;
}
int startMirror(void) {
    for (const char *message :
         {"Stream start failed!", "Error during runMirror", "socket not connected"})
        if (refuses(message))
            puts(message);
    return refuses("startMirror") ? -1 : 1;
}
int stopMirror(void) {
    return refuses("stopMirror") ? -1 : 1;
}
