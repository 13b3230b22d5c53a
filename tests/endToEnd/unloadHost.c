/* A host in plain C that loads the library, runs it and unloads it in mid-run, over and over.
 *
 *     unloadHost LIBRARY CONFIG ROUNDS PORT
 *
 * CONFIG is the document itself; its device must be 127.0.56.1 with the given PORT. Prints the
 * first error and exits with 1, or exits with 0.
 */
#include "mirror/mirrorInterface.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>

static int fail(const char *what) {
    printf("%s\n", what);
    return 1;
}

static int countEntries(const char *path) {
    int count = 0;
    DIR *directory = opendir(path);
    while (directory != NULL && readdir(directory) != NULL)
        ++count;
    if (directory != NULL)
        closedir(directory);
    return count;
}

/* A joined thread may still be listed for a moment. */
static int threadsBecome(int count) {
    for (int tries = 0; tries < 20000 && countEntries("/proc/self/task") != count; ++tries)
        poll(NULL, 0, 1); /* milliseconds */
    return countEntries("/proc/self/task") == count;
}

static int isMapped(const char *name) {
    char line[1024];
    int found = 0;
    FILE *maps = fopen("/proc/self/maps", "r");
    while (maps != NULL && fgets(line, sizeof line, maps) != NULL)
        found |= strstr(line, name) != NULL;
    if (maps != NULL)
        fclose(maps);
    return found;
}

static int listenOn(int port) {
    struct sockaddr_in address = {.sin_family = AF_INET, .sin_port = htons((unsigned short)port)};
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    inet_aton("127.0.56.1", &address.sin_addr);
    return bind(fd, (struct sockaddr *)&address, sizeof address) == 0 ? fd : -1;
}

static int awaitDatagrams(int fd, int wanted) {
    char bytes[2048];
    while (wanted-- > 0) {
        struct pollfd waiting = {fd, POLLIN, 0};
        if (poll(&waiting, 1, 10000) != 1 || recv(fd, bytes, sizeof bytes, 0) < 1)
            return 0;
    }
    return 1;
}

static const int handledSignals[] = {SIGINT, SIGABRT, SIGTERM, SIGBUS, SIGFPE, SIGPIPE, SIGSEGV};
enum { signalCount = sizeof handledSignals / sizeof *handledSignals };

static void ownHandler(int number) {
    _Exit(number);
}

/* Installs the host's handlers; `installed` receives them as the system reports them. */
static void installHandlers(struct sigaction *installed) {
    struct sigaction own = {.sa_handler = ownHandler, .sa_flags = SA_NODEFER};
    sigemptyset(&own.sa_mask);
    sigaddset(&own.sa_mask, SIGUSR1);
    for (int i = 0; i < signalCount; ++i) {
        sigaction(handledSignals[i], &own, NULL);
        sigaction(handledSignals[i], NULL, &installed[i]);
    }
}

static int handlersAre(const struct sigaction *installed) {
    for (int i = 0; i < signalCount; ++i) {
        struct sigaction now;
        sigaction(handledSignals[i], NULL, &now);
        if (now.sa_handler != installed[i].sa_handler || now.sa_flags != installed[i].sa_flags ||
            sigismember(&now.sa_mask, SIGUSR1) != 1)
            return 0;
    }
    return 1;
}

static int oneRound(const char *library, char *config, int receiver) {
    void *handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL)
        return fail(dlerror());
    int (*setConfig)(char *) = (int (*)(char *))dlsym(handle, "setMirrorConfig");
    int (*start)(void) = (int (*)(void))dlsym(handle, "startMirror");
    if (setConfig == NULL || start == NULL)
        return fail("a function is missing");
    if (setConfig(config) != 1)
        return fail("the configuration was refused");
    if (start() != 1)
        return fail("the run did not start");
    if (!awaitDatagrams(receiver, 2))
        return fail("no datagram arrived");
    if (isMapped("libwayland-client") != (getenv("WAYLAND_DISPLAY") != NULL))
        return fail("the client library of Wayland is loaded in Wayland sessions only");
    dlclose(handle); /* in mid-run */
    if (isMapped("libscreenMirrorMac") || isMapped("libwayland-client"))
        return fail("the library is still mapped");
    return 0;
}

int main(int argc, char **argv) {
    if (argc != 5)
        return fail("usage: unloadHost LIBRARY CONFIG ROUNDS PORT");
    const int rounds = atoi(argv[3]);
    const int receiver = listenOn(atoi(argv[4]));
    struct sigaction handlers[signalCount];
    installHandlers(handlers);
    int descriptors = 0;
    int threads = 0;
    for (int round = 0; round < rounds; ++round) {
        if (oneRound(argv[1], argv[2], receiver) != 0)
            return 1;
        if (!handlersAre(handlers))
            return fail("the host's signal handlers are not back");
        /* What the first round leaves, such as a sanitizer's own thread, is permanent. */
        if (round == 0) {
            descriptors = countEntries("/proc/self/fd");
            threads = countEntries("/proc/self/task");
        }
        if (countEntries("/proc/self/fd") != descriptors)
            return fail("descriptors were left open");
        if (!threadsBecome(threads))
            return fail("a thread outlived the library");
    }
    return 0;
}
