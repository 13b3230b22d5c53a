#include "mirror/mirrorInterface.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

int main(int argc, char **argv) {
    /* Ask which displays there are, and take the first. */
    char displays[4096] = "";
    if (argc != 2 || getDisplays(displays, sizeof displays - 1) != 1)
        return 1;
    const char *first = strstr(displays, "\"displayID\":");
    if (first == NULL)
        return 1;

    /* Configure: one device with two panels. */
    char config[1024];
    snprintf(config, sizeof config,
             "{\"displayID\": %lu, \"mode\": 0, \"devices\": [{"
             "\"ip\": \"%s\", \"controlVersion\": 2, \"shapeType\": 0, \"scaleFactor\": 1.0,"
             "\"panels\": [{\"panelID\": 1, \"centroidX\": 100, \"centroidY\": 100},"
             "             {\"panelID\": 2, \"centroidX\": 300, \"centroidY\": 100}]}]}",
             strtoul(first + strlen("\"displayID\":"), NULL, 10), argv[1]);
    if (setMirrorConfig(config) != 1 || startMirror() != 1)
        return 1;

    /* Ask what is being sent. */
    if (captureCurrentStreamFrames() == 0) {
        const int size = getSizeOfStreamFrameJson();
        char *sent = size > 0 ? calloc((size_t)size + 1, 1) : NULL;
        if (sent != NULL && getStreamFrameJson(sent) == 0)
            puts(sent);
        free(sent);
    }

    sleep(10);
    return stopMirror() == 1 ? 0 : 1;
}
