// The library's handlers are called through callImageHandler(), with the macOS signal number. The
// host's handlers, which the library may query and restore, are not changed.
#include "tests/macho/loader/image.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/flags.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/signalNumbers.h"
#include "tests/macho/shims/system.h"

#include <array>
#include <atomic>
#include <csignal>

namespace macho {

namespace {

using Handler = void (*)(int);

struct DarwinAction {
    Handler handler;
    std::uint32_t mask;
    std::int32_t flags;
};
static_assert(sizeof(DarwinAction) == 16);

// Apple's sys/signal.h.
constexpr Flag actionFlags[] = {
    {SA_ONSTACK, 0x1},  {SA_RESTART, 0x2},    {SA_RESETHAND, 0x4}, {SA_NOCLDSTOP, 0x8},
    {SA_NODEFER, 0x10}, {SA_NOCLDWAIT, 0x20}, {SA_SIGINFO, 0x40},
};

// This system's C library adds it to every action, so it is ignored.
constexpr unsigned restorerFlag = 0x04000000;

constexpr int signalCount = 65;
std::array<std::atomic<Handler>, signalCount> imageHandlers; // by this system's number

void callImageHandler(int signal) {
    imageHandlers[static_cast<std::size_t>(signal)].load()(darwinSignal(signal));
}

bool isSpecial(Handler handler) {
    return handler == SIG_DFL || handler == SIG_IGN;
}

std::int32_t darwinFlags(unsigned host) {
    std::int32_t darwin = 0;
    for (const Flag &flag : actionFlags)
        if ((host & flag.host) != 0) {
            darwin |= flag.darwin;
            host &= ~flag.host;
        }
    if ((host & ~restorerFlag) != 0)
        refuse("a signal action with the flags " + std::to_string(host) + " of this system");
    return darwin;
}

DarwinAction darwinAction(int signal, const struct sigaction &host) {
    DarwinAction darwin = {};
    darwin.handler = host.sa_handler;
    if (darwin.handler == callImageHandler)
        darwin.handler = imageHandlers[static_cast<std::size_t>(signal)];
    darwin.mask = darwinSignalSet(host.sa_mask);
    darwin.flags = darwinFlags(static_cast<unsigned>(host.sa_flags));
    return darwin;
}

struct sigaction hostAction(int signal, const DarwinAction &darwin) {
    struct sigaction host = {};
    host.sa_handler = darwin.handler;
    host.sa_mask = hostSignalSet(darwin.mask);
    host.sa_flags = hostFlags("a signal action", actionFlags, darwin.flags);
    if (!isSpecial(darwin.handler) && Image::around(reinterpret_cast<void *>(darwin.handler))) {
        if ((host.sa_flags & SA_SIGINFO) != 0)
            refuse("a handler of the library that wants more than the signal's number");
        imageHandlers[static_cast<std::size_t>(signal)] = darwin.handler;
        host.sa_handler = callImageHandler;
    }
    return host;
}

int shimAction(int number, const DarwinAction *wanted, DarwinAction *before) {
    const int signal = hostSignal(number);
    struct sigaction old = {};
    if (sigaction(signal, nullptr, &old) != 0)
        return withErrno(-1);
    const DarwinAction oldDarwin = darwinAction(signal, old);
    if (wanted != nullptr) {
        const struct sigaction host = hostAction(signal, *wanted);
        if (sigaction(signal, &host, nullptr) != 0)
            return withErrno(-1);
    }
    if (before != nullptr)
        *before = oldDarwin;
    return 0;
}

Handler shimSignal(int number, Handler handler) {
    constexpr std::int32_t restart = 0x2;
    const DarwinAction wanted = {handler, 0, restart};
    DarwinAction before = {};
    return shimAction(number, &wanted, &before) == 0 ? before.handler : SIG_ERR;
}

int shimMask(int how, const std::uint32_t *wanted, std::uint32_t *before) {
    constexpr int ways[] = {SIG_BLOCK, SIG_UNBLOCK, SIG_SETMASK}; // 1 to 3 on macOS
    if (how < 1 || how > 3)
        refuse("a change of the signal mask of the kind " + std::to_string(how));
    const sigset_t host = hostSignalSet(wanted == nullptr ? 0 : *wanted);
    sigset_t old;
    const int error = pthread_sigmask(ways[how - 1], wanted == nullptr ? nullptr : &host, &old);
    if (error == 0 && before != nullptr)
        *before = darwinSignalSet(old);
    return error;
}

int shimWait(const std::uint32_t *awaited, int *number) {
    const sigset_t host = hostSignalSet(*awaited);
    int signal = 0;
    const int error = sigwait(&host, &signal);
    if (error != 0)
        return darwinError(error);
    *number = darwinSignal(signal);
    return 0;
}

int shimKill(pid_t process, int number) {
    return withErrno(kill(process, number == 0 ? 0 : hostSignal(number)));
}

void checkHandlersAreGone(const Image &image) {
    for (int signal = 1; signal < signalCount; ++signal) {
        struct sigaction now = {};
        if (sigaction(signal, nullptr, &now) != 0 || now.sa_handler != callImageHandler)
            continue;
        if (image.contains(
                reinterpret_cast<void *>(imageHandlers[static_cast<std::size_t>(signal)].load())))
            refuse("unload with a handler for the signal " + std::to_string(darwinSignal(signal)) +
                   " in place");
    }
}

} // namespace

void addSignals(Imports &imports) {
    imports.add(libSystem, "_signal", shimSignal);
    imports.add(libSystem, "_sigaction", shimAction);
    imports.add(libSystem, "_pthread_sigmask", shimMask);
    imports.add(libSystem, "_sigwait", shimWait);
    imports.add(libSystem, "_kill", shimKill);
    imports.unloadChecks.emplace_back(checkHandlersAreGone);
}

} // namespace macho
