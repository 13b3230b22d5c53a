/* A host in plain C: mirrors the first display onto one light device for ten seconds.
 *
 *     exampleHost ADDRESS
 */
#include "mirror/mirrorInterface.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

int main(int argc, char **argv) {
    /* Ask: which displays are there? */
    char displays[4096] = "";
    if (argc != 2 || getDisplays(displays, sizeof displays - 1) != 1)
        return 1;
    const char *first = strstr(displays, "\"displayID\":");
    if (first == NULL) {
        puts("There is no display.");
        return 1;
    }

    /* Configure: one device with two panels. */
    char config[1024];
    snprintf(config, sizeof config,
             "{\"displayID\": %lu, \"mode\": 0, \"devices\": [{"
             "\"ip\": \"%s\", \"controlVersion\": 2, \"shapeType\": 0, \"scaleFactor\": 1.0,"
             "\"panels\": [{\"panelID\": 1, \"centroidX\": 100, \"centroidY\": 100},"
             "             {\"panelID\": 2, \"centroidX\": 300, \"centroidY\": 100}]}]}",
             strtoul(first + strlen("\"displayID\":"), NULL, 10), argv[1]);
    if (setMirrorConfig(config) != 1)
        return 1;

    /* Start, and see what is sent. */
    if (startMirror() != 1)
        return 1;
    if (captureCurrentStreamFrames() == 0) {
        const int size = getSizeOfStreamFrameJson();
        char *sent = calloc((size_t)(size > 0 ? size : 0) + 1, 1);
        if (sent != NULL && size > 0 && getStreamFrameJson(sent) == 0)
            puts(sent);
        free(sent);
    }
    sleep(10);

    /* Stop. */
    return stopMirror() == 1 ? 0 : 1;
}
