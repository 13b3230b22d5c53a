/* A host in plain C that mirrors until a signal ends it.
 *
 *     signalHost LIBRARY CONFIG WHAT
 *
 * WHAT: "wait"   prints "ready" once a run is under way and waits
 *       "fault"  the first send faults on the mirroring thread
 *       "overflow"  overflows the stack of a thread that has an alternate signal stack
 *       "cycle"  prints "ready" and then starts and stops forever
 *       "after"  prints "ready" after a run has been stopped and waits
 *       "ask"    prints "ready" and then asks for the palette forever
 *       "elsewhere"  does the same with SIGINT left to the library's threads
 *       "again"  is interrupted in its second start, just before the thread is made
 *       "newborn"  is interrupted in its second start, on the new thread before it does anything
 */
#define _GNU_SOURCE
#include "mirror/mirrorInterface.h"

#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

static int faulting = 0;
static volatile int *nowhere = NULL;
static int sent = 0; /* since the start; atomic */

/* Replaces the C library's function. */
ssize_t sendto(int fd, const void *bytes, size_t length, int flags, const struct sockaddr *to,
               socklen_t toLength) {
    const struct iovec part = {(void *)bytes, length};
    const struct msghdr message = {.msg_name = (void *)to,
                                   .msg_namelen = toLength,
                                   .msg_iov = (struct iovec *)&part,
                                   .msg_iovlen = 1};
    if (faulting)
        *nowhere = 1;
    __atomic_store_n(&sent, 1, __ATOMIC_RELEASE);
    return sendmsg(fd, &message, flags);
}

#if !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer)
static int interrupted = 0;
static int newborn = 0;

struct Birth {
    void *(*run)(void *);
    void *argument;
};

static void *interruptAndRun(void *birth) {
    const struct Birth born = *(struct Birth *)birth;
    free(birth);
    raise(SIGINT);
    return born.run(born.argument);
}

/* Replaces the C library's function. */
int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *),
                   void *argument) {
    int (*real)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *) =
        (int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *))dlsym(
            RTLD_NEXT, "pthread_create");
    if (interrupted)
        raise(SIGINT);
    if (newborn) {
        newborn = 0;
        struct Birth *birth = malloc(sizeof *birth);
        *birth = (struct Birth){run, argument};
        return real(thread, attributes, interruptAndRun, birth);
    }
    return real(thread, attributes, run, argument);
}
#else
static int interrupted = 0; /* the sanitizers have a pthread_create of their own */
static int newborn = 0;
#endif

/* As small as runtimes make it; a handler that needs more faults. */
static int useSmallSignalStack(void) {
    const size_t page = (size_t)sysconf(_SC_PAGESIZE);
    const size_t size = ((size_t)sysconf(_SC_MINSIGSTKSZ) + 4096 + page - 1) / page * page;
    char *memory = mmap(NULL, page + size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const stack_t stack = {.ss_sp = memory + page, .ss_size = size};
    return memory != MAP_FAILED && mprotect(memory + page, size, PROT_READ | PROT_WRITE) == 0 &&
           sigaltstack(&stack, NULL) == 0;
}

static int overflow(volatile char *caller) {
    volatile char here[1024];
    here[0] = caller[0];
    return here[0] == 0 ? overflow(here) + here[0] : 0;
}

int main(int argc, char **argv) {
    if (argc != 4)
        return 100;
    void *handle = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL)
        return 101;
    int (*setConfig)(char *) = (int (*)(char *))dlsym(handle, "setMirrorConfig");
    int (*start)(void) = (int (*)(void))dlsym(handle, "startMirror");
    int (*stop)(void) = (int (*)(void))dlsym(handle, "stopMirror");
    faulting = strcmp(argv[3], "fault") == 0;
    if (setConfig(argv[2]) != 1 || start() != 1)
        return 102;
    if (strcmp(argv[3], "after") == 0)
        stop();
    if (strcmp(argv[3], "again") == 0) {
        stop();
        interrupted = 1;
        start();
        return 104;
    }
    if (strcmp(argv[3], "newborn") == 0) {
        stop();
        newborn = 1;
        alarm(5); /* ends a handler that waits for its own thread */
        start();
        for (;;)
            pause();
    }
    if (strcmp(argv[3], "elsewhere") == 0) {
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        pthread_sigmask(SIG_BLOCK, &interrupt, NULL);
        /* The thread sanitizer loses signals that arrive during a thread's first blocking call. */
        while (!__atomic_load_n(&sent, __ATOMIC_ACQUIRE))
            usleep(1000);
    }
    if (strcmp(argv[3], "overflow") == 0) {
        volatile char first = 0;
        return useSmallSignalStack() ? overflow(&first) : 105;
    }
    /* Not through stdio: the exit in a signal handler would flush a half-flushed buffer again. */
    if (write(STDOUT_FILENO, "ready\n", 6) != 6)
        return 103;
    if (strcmp(argv[3], "ask") == 0 || strcmp(argv[3], "elsewhere") == 0) {
        int (*ask)(char *) = (int (*)(char *))dlsym(handle, "getPalette");
        char palette[512];
        for (;;)
            ask(palette);
    }
    if (strcmp(argv[3], "cycle") == 0) {
        for (;;) {
            stop();
            setConfig(argv[2]);
            start();
        }
    }
    for (;;)
        pause();
}
