/* A host in C: lists the displays, mirrors the first one onto a light device for some seconds, and
 * shows the data sent and the colours on the screen.
 *
 *     mirrorScreen ADDRESS [SECONDS]
 */
#include "mirror/mirrorInterface.h"

#include <arpa/inet.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

struct display {
    unsigned id, width, height;
};

/* The library accepts only numeric addresses and does not report others, so check them here. */
static int isAddress(const char *text) {
    struct in6_addr address;
    return inet_pton(AF_INET, text, &address) == 1 || inet_pton(AF_INET6, text, &address) == 1;
}

/* Each step below returns NULL on success, or else an error message. */

static const char *listDisplays(struct display *first) {
    /* A text that fills the bound may be cut and has no terminating zero: add one byte for it. */
    enum { bound = 4096 };
    char text[bound + 1] = "";
    if (getDisplays(text, bound) != 1)
        return "the displays cannot be listed";
    if (strlen(text) == bound)
        return "the list of displays is cut";
    int count = 0;
    for (const char *at = text; (at = strstr(at, "{\"displayID\":")) != NULL; ++at) {
        struct display one;
        if (sscanf(at, "{\"displayID\":%u,\"width\":%u,\"height\":%u}", &one.id, &one.width,
                   &one.height) != 3)
            continue;
        printf("display %u: %u x %u\n", one.id, one.width, one.height);
        if (count++ == 0)
            *first = one;
    }
    return count > 0 ? NULL : "there is no display to mirror; on Linux, DISPLAY names an X server";
}

/* Four panels in a row across the middle of the display. */
static const char *configure(const struct display *display, const char *address) {
    char panels[512] = "";
    for (unsigned i = 0; i < 4; ++i)
        snprintf(panels + strlen(panels), sizeof panels - strlen(panels),
                 "%s{\"panelID\": %u, \"centroidX\": %u, \"centroidY\": %u}", i > 0 ? ", " : "",
                 i + 1, (2 * i + 1) * display->width / 8, display->height / 2);
    /* Integers in the document are signed: pass the identifier's 32 bits as a signed integer. */
    char config[1024];
    snprintf(
        config, sizeof config,
        "{\"displayID\": %d, \"mode\": 0, \"devices\": [{\"ip\": \"%s\", \"controlVersion\": 2,"
        " \"shapeType\": 0, \"scaleFactor\": 1.0, \"panels\": [%s]}]}",
        (int)display->id, address, panels);
    return setMirrorConfig(config) == 1
               ? NULL
               : "the configuration was not applied: the screen cannot be captured";
}

/* startMirror() replaces the handlers of these signals with the library's, which end the process.
 * They are in place when it returns, so that is when to restore the host's own handlers. */
static int startKeepingSignalHandlers(void) {
    static const int replaced[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};
    enum { count = sizeof replaced / sizeof *replaced };
    struct sigaction saved[count];
    for (int i = 0; i < count; ++i)
        sigaction(replaced[i], NULL, &saved[i]);
    const int result = startMirror();
    for (int i = 0; i < count; ++i)
        sigaction(replaced[i], &saved[i], NULL);
    return result;
}

static const char *start(void) {
    switch (startKeepingSignalHandlers()) {
    case 1:
        return NULL;
    case 0:
        return "mirroring was not started: a run exists already or there is no device";
    default:
        return "mirroring was not started: no thread could be made";
    }
}

static const char *showSent(void) {
    if (captureCurrentStreamFrames() != 0)
        return "nothing was sent within a second";
    const int size = getSizeOfStreamFrameJson();
    if (size < 0)
        return "the snapshot could not be made";
    if (size == 0)
        return "no frame was captured";
    /* Exactly `size` bytes are written; calloc() provides the terminating zero. */
    char *text = calloc((size_t)size + 1, 1);
    if (text == NULL)
        return "the snapshot could not be fetched: there is no memory for it";
    const int fetched = getStreamFrameJson(text);
    if (fetched == 0)
        printf("sent: %s\n", text);
    free(text);
    return fetched == 0 ? NULL : "the snapshot could not be fetched";
}

static const char *showPalette(void) {
    enum { bound = 512 };
    char text[bound + 1] = "";
    if (getPalette(text) != 0)
        return "the palette could not be made";
    if (strlen(text) == bound)
        return "the palette is cut";
    const int swatches = isatty(STDOUT_FILENO);
    printf("palette:");
    for (const char *at = text; (at = strstr(at, "{\"R\":")) != NULL; ++at) {
        unsigned red, green, blue;
        if (sscanf(at, "{\"R\":%u,\"G\":%u,\"B\":%u}", &red, &green, &blue) != 3)
            continue;
        if (swatches)
            printf(" \033[48;2;%u;%u;%um  \033[0m", red, green, blue);
        printf(" #%02x%02x%02x", red, green, blue);
    }
    printf("\n");
    return NULL;
}

int main(int argc, char **argv) {
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: mirrorScreen ADDRESS [SECONDS]\n");
        return 2;
    }
    const char *address = argv[1];
    if (!isAddress(address)) {
        fprintf(stderr, "mirrorScreen: not an IPv4 or IPv6 address: %s\n", address);
        return 1;
    }

    /* A write to a closed pipe should fail, not end the process. */
    signal(SIGPIPE, SIG_IGN);

    struct display display = {0, 0, 0};
    const char *error = listDisplays(&display);
    if (error == NULL)
        error = configure(&display, address);
    if (error == NULL)
        error = start();
    if (error == NULL) {
        printf("mirroring display %u onto %s\n", display.id, address);
        fflush(stdout);
        sleep(argc > 2 ? (unsigned)atoi(argv[2]) : 10);
        error = showSent();
        if (error == NULL)
            error = showPalette();
        if (error == NULL && (fflush(stdout) != 0 || ferror(stdout)))
            error = "standard output cannot be written";
        /* Always stop a run that was started, even after an error. */
        if (stopMirror() != 1 && error == NULL)
            error = "mirroring could not be stopped";
    }
    if (error != NULL)
        fprintf(stderr, "mirrorScreen: %s\n", error);
    return error == NULL ? 0 : 1;
}
