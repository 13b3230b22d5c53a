// A refused call ends the test's process, whatever the library would do next.
#include "tests/macho/library/libraryOverFakes.h"
#include "tests/macho/shims/refuse.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace macho {

namespace {

template <class Function> Function *import(const char *library, const char *symbol) {
    const void *address = libraryImports().find(library, symbol);
    EXPECT_NE(address, nullptr) << symbol;
    return reinterpret_cast<Function *>(const_cast<void *>(address));
}

#define EXPECT_REFUSED(call, message)                                                              \
    EXPECT_EXIT(call, testing::ExitedWithCode(refusalStatus), "refused: " message)

int openSocket() {
    return import <int(int, int, int)>(libSystem, "_socket")(2, 2, 0);
}

TEST(Refusal, AddressFamiliesOfThisSystem) {
    auto *open = import <int(int, int, int)>(libSystem, "_socket");
    EXPECT_REFUSED(open(AF_INET6, 2, 0), "the address family 10");
    EXPECT_REFUSED(open(2, 5, 0), "socket of the type 5 and the protocol 0");
    EXPECT_REFUSED(open(30, 2, 17), "socket of the type 2 and the protocol 17");
    char address[16] = {2, 0}; // the family as this system stores it
    auto *bindTo = import <int(int, const void *, socklen_t)>(libSystem, "_bind");
    EXPECT_REFUSED(bindTo(openSocket(), address, 16), "the address family 0");
    auto *parse = import <int(int, const char *, void *)>(libSystem, "_inet_pton");
    EXPECT_REFUSED(parse(AF_INET6, "::1", address), "the address family 10");
}

TEST(Refusal, OptionsOfThisSystem) {
    auto *set = import <int(int, int, int, const void *, socklen_t)>(libSystem, "_setsockopt");
    const int on = 1;
    EXPECT_REFUSED(set(openSocket(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on),
                   "the socket option 6 of the level 1 with 4 bytes");
    EXPECT_REFUSED(set(openSocket(), 0xffff, SO_BROADCAST, &on, sizeof on),
                   "the socket option 6 of the level 65535 with 4 bytes");
    EXPECT_REFUSED(set(openSocket(), 0xffff, 0x1006, &on, sizeof on), "a time-out of 4 bytes");
}

TEST(Refusal, FlagsOfThisSystem) {
    auto *control = import <int(int, int, ...)>(libSystem, "_fcntl");
    EXPECT_REFUSED(control(openSocket(), 4, 04000), "fcntl.F_SETFL. with the flags 2048");
    EXPECT_REFUSED(control(openSocket(), 1030, 0),
                   "fcntl with the command 1030 and the argument 0");
    char address[16] = {16, 2};
    auto *send = import <ssize_t(int, const void *, std::size_t, int, const void *, socklen_t)>(
        libSystem, "_sendto");
    EXPECT_REFUSED(send(openSocket(), "x", 1, MSG_NOSIGNAL, address, 16),
                   "sendto with the flags 16384");
    auto *open = import <int(const char *, int, ...)>(libSystem, "_open");
    EXPECT_REFUSED(open("/dev/null", O_WRONLY | O_CREAT, 0600), "open with the flags 64");
    EXPECT_REFUSED(open("/dev/null", O_CLOEXEC), "open with the flags 524288");
}

TEST(Refusal, RequestsOfThisSystem) {
    auto *control = import <int(int, unsigned long, ...)>(libSystem, "_ioctl");
    EXPECT_REFUSED(control(openSocket(), TIOCGWINSZ), "ioctl with the request 21523");
    pollfd polled = {openSocket(), POLLRDHUP, 0};
    auto *wait = import <int(pollfd *, unsigned, int)>(libSystem, "_poll");
    EXPECT_REFUSED(wait(&polled, 1, 0), "poll for the events 8192");
    auto *find =
        import <int(const char *, const char *, const void *, void *)>(libSystem, "_getaddrinfo");
    const int hints[12] = {AI_NUMERICSERV, 0, 1};
    void *found = nullptr;
    EXPECT_REFUSED(find("127.0.0.1", "1", hints, &found), "getaddrinfo with the flags 1024");
}

TEST(Refusal, DescriptorsThatAreNotTheLibrarys) {
    auto *close = import <int(int)>(libSystem, "_close");
    EXPECT_REFUSED(close(1), "close with descriptor 1, which the library has not opened");
    EXPECT_REFUSED(
        {
            const int fd = openSocket();
            close(fd);
            close(fd);
        },
        "close with descriptor");
    EXPECT_EQ(close(-1), -1); // for a socket that could not be opened
}

TEST(Refusal, SignalsThatMacOSDoesNotHave) {
    using Handler = void (*)(int);
    auto *signal = import <Handler(int, Handler)>(libSystem, "_signal");
    EXPECT_REFUSED(signal(SIGBUS, SIG_IGN), "the signal 7"); // SIGEMT on macOS, unknown here
    struct {
        Handler handler;
        std::uint32_t mask;
        std::int32_t flags;
    } action = {SIG_IGN, 0, SA_NODEFER};
    auto *act = import <int(int, const void *, void *)>(libSystem, "_sigaction");
    EXPECT_REFUSED(act(10, &action, nullptr), "a signal action with the flags 1073741824");
}

TEST(Refusal, MutexesThatAreNone) {
    alignas(8) char zeros[64] = {};
    auto *lock = import <void(void *)>(libCxx, "__ZNSt3__15mutex4lockEv");
    EXPECT_REFUSED(lock(zeros), "lock of a mutex that is none");
    alignas(8) char mutex[64] = {};
    const std::int64_t signature = 0x32aaaba7;
    std::memcpy(mutex, &signature, sizeof signature);
    auto *unlock = import <void(void *)>(libCxx, "__ZNSt3__15mutex6unlockEv");
    auto *destroy = import <void(void *)>(libCxx, "__ZNSt3__15mutexD1Ev");
    EXPECT_REFUSED(
        {
            lock(mutex);
            destroy(mutex);
        },
        "destruction of a locked mutex");
    EXPECT_REFUSED(
        {
            destroy(mutex);
            lock(mutex);
        },
        "lock of a mutex that is none");
    lock(mutex);
    unlock(mutex);
    destroy(mutex);
}

TEST(Refusal, ConditionsThatAreNone) {
    alignas(8) char zeros[48] = {};
    auto *notify = import <void(void *)>(libCxx, "__ZNSt3__118condition_variable10notify_allEv");
    EXPECT_REFUSED(notify(zeros), "notification of a condition that was never made");
}

TEST(Refusal, KeysOfFourBytes) {
    auto *set = import <int(std::uint64_t, const void *)>(libSystem, "_pthread_setspecific");
    EXPECT_REFUSED(set(3, nullptr), "a thread-specific value with the unknown key 3");
}

TEST(Refusal, ListsOfInterfacesFreedTwice) {
    auto *get = import <int(void **)>(libSystem, "_getifaddrs");
    auto *free = import <void(void *)>(libSystem, "_freeifaddrs");
    EXPECT_REFUSED(
        {
            void *list = nullptr;
            get(&list);
            free(list);
            free(list);
        },
        "freeifaddrs of a list that was not handed out or is freed already");
}

TEST(Refusal, ErrorNumbersOfThisSystem) {
    auto *text = import <char *(int)>(libSystem, "_strerror");
    EXPECT_STREQ(text(49), "Can't assign requested address");
    EXPECT_REFUSED(text(99), "strerror of 99");
}

// At unload.

class UnloadRefusal : public LibraryOverFakes {};

TEST_F(UnloadRefusal, AHandlerThatIsStillInPlace) {
    using Handler = void (*)(int);
    const auto handler =
        reinterpret_cast<Handler>(image->symbol("_ZN13MirrorManager20static_signalHandlerEi"));
    auto *signal = import <Handler(int, Handler)>(libSystem, "_signal");
    EXPECT_REFUSED(
        {
            signal(10, handler);
            unload();
        },
        "unload with a handler for the signal 10 in place");
}

TEST_F(UnloadRefusal, AThreadThatStillRuns) {
    auto *create = import <int(pthread_t *, const void *, void *(*)(void *), void *)>(
        libSystem, "_pthread_create");
    EXPECT_REFUSED(
        {
            pthread_t thread;
            create(
                &thread, nullptr,
                [](void *) -> void * {
                    pause();
                    return nullptr;
                },
                nullptr);
            unload();
        },
        "unload while a thread of the library runs");
}

TEST_F(UnloadRefusal, AListOfInterfacesThatWasNotFreed) {
    auto *get = import <int(void **)>(libSystem, "_getifaddrs");
    EXPECT_REFUSED(
        {
            void *list = nullptr;
            get(&list);
            unload();
        },
        "unload with a list of interfaces that was not freed");
}

} // namespace

} // namespace macho
