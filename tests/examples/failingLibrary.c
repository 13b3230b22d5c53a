/* Stands in for the library and fails on request. The function that FAIL names returns the number
 * in FAIL_WITH. With "full" its text fills the buffer instead, and with "none" it lists no display.
 * Prints "stopped" when a run is stopped.
 */
#include "mirror/mirrorInterface.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The value of FAIL_WITH if the function is to fail, otherwise NULL. */
static const char *failureOf(const char *function) {
    const char *wanted = getenv("FAIL");
    return wanted != NULL && strcmp(wanted, function) == 0 ? getenv("FAIL_WITH") : NULL;
}

static int answer(const char *function, int usual) {
    const char *failure = failureOf(function);
    return failure != NULL ? atoi(failure) : usual;
}

static int write(const char *function, const char *text, char *buffer, int bound, int usual) {
    const char *failure = failureOf(function);
    if (failure != NULL && strcmp(failure, "full") == 0) {
        /* Without a terminating zero. */
        memset(buffer, ' ', (size_t)bound);
        memcpy(buffer, text, strlen(text));
        return usual;
    }
    if (failure != NULL && strcmp(failure, "none") != 0)
        return atoi(failure);
    strncpy(buffer, text, (size_t)bound);
    return usual;
}

static const char sent[] =
    "{\"numDevices\":1,\"devices\":[{\"ip\":\"127.0.0.1\",\"animData\":\"1 1 1 2 3 4 0 5\"}]}";

int getDisplays(char *buffer, int bufferLength) {
    const char *none = failureOf("getDisplays");
    const char *text =
        none != NULL && strcmp(none, "none") == 0
            ? "{\"numDisplays\":0,\"displays\":[]}"
            : "{\"numDisplays\":1,\"displays\":[{\"displayID\":4294967295,\"width\":480,"
              "\"height\":300}]}";
    return write("getDisplays", text, buffer, bufferLength, 1);
}

int getSizeOfStreamFrameJson(void) {
    return answer("getSizeOfStreamFrameJson", (int)strlen(sent));
}

int getStreamFrameJson(char *buffer) {
    const int result = answer("getStreamFrameJson", 0);
    if (result == 0)
        memcpy(buffer, sent, strlen(sent));
    return result;
}

int captureCurrentStreamFrames(void) {
    return answer("captureCurrentStreamFrames", 0);
}

int getPalette(char *buffer) {
    return write("getPalette", "{\"palette\":[{\"R\":1,\"G\":2,\"B\":3}]}", buffer, 512, 0);
}

int setMirrorConfig(char *json) {
    /* The identifier must be a signed integer: the library accepts no other. */
    if (strstr(json, "\"displayID\":-1,") == NULL && strstr(json, "\"displayID\": -1,") == NULL)
        abort();
    return answer("setMirrorConfig", 1);
}

int startMirror(void) {
    return answer("startMirror", 1);
}

int stopMirror(void) {
    puts("stopped");
    fflush(stdout);
    return answer("stopMirror", 1);
}
