#include "mirror/mirrorInterface.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int fail(const char *why) {
    fprintf(stderr, "host: %s\n", why);
    return 1;
}

int main(int argc, char **argv) {
    if (argc != 2)
        return fail("name the address of a light, such as 192.0.2.7");

    /* The first display. Integers in the document are signed: pass the same 32 bits. */
    char displays[1025] = "";
    if (getDisplays(displays, sizeof displays - 1) != 1)
        return fail("the displays cannot be listed");
    const char *first = strstr(displays, "\"displayID\":");
    if (first == NULL)
        return fail("there is no display to mirror");
    const int display = (int)strtoul(first + strlen("\"displayID\":"), NULL, 10);

    /* One device with two panels. */
    char config[1024];
    snprintf(config, sizeof config,
             "{\"displayID\": %d, \"mode\": 0, \"devices\": [{"
             "\"ip\": \"%s\", \"controlVersion\": 2, \"shapeType\": 0, \"scaleFactor\": 1.0,"
             "\"panels\": [{\"panelID\": 1, \"centroidX\": 100, \"centroidY\": 100},"
             "             {\"panelID\": 2, \"centroidX\": 300, \"centroidY\": 100}]}]}",
             display, argv[1]);
    if (setMirrorConfig(config) != 1)
        return fail("the configuration was not applied; may this program record the screen?");
    if (startMirror() != 1)
        return fail("mirroring could not be started");
    sleep(10);
    return stopMirror() == 1 ? 0 : fail("mirroring could not be stopped");
}
