// std::condition_variable, and the shared state of std::future, which contains one and a mutex.
#include "tests/macho/shims/mutexes.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <atomic>
#include <cstddef>
#include <exception>
#include <future>
#include <mutex>

namespace macho {

namespace {

// A signature and 40 bytes, which count the notifications. A wait may end without one.
struct DarwinCondition {
    std::int64_t signature;
    std::atomic<std::int32_t> rounds;
    char room[36];
};
static_assert(sizeof(DarwinCondition) == 48);

constexpr std::int64_t staticSignature = 0x3cb0b1bb; // of PTHREAD_COND_INITIALIZER
constexpr std::int64_t destroyedSignature = 0;

void check(const char *call, const DarwinCondition *condition) {
    if (condition->signature != staticSignature)
        refuse(std::string(call) + " of a condition that was never made, or is destroyed");
}

void notify(DarwinCondition *condition) noexcept {
    check("notification", condition);
    ++condition->rounds;
    condition->rounds.notify_all();
}

// macOS's std::unique_lock.
struct DarwinLock {
    DarwinMutex *mutex;
    bool isLocked;
};
static_assert(sizeof(DarwinLock) == 16);

void wait(DarwinCondition *condition, DarwinLock *lock) noexcept {
    check("wait", condition);
    if (!lock->isLocked)
        refuse("wait for a condition without a locked mutex");
    const std::int32_t round = condition->rounds;
    unlockMutex(lock->mutex);
    condition->rounds.wait(round);
    lockMutex(lock->mutex);
}

void destroyCondition(DarwinCondition *condition) noexcept {
    check("destruction", condition);
    condition->signature = destroyedSignature;
}

// libc++'s __assoc_sub_state.
struct DarwinState {
    void (**functions)(DarwinState *); // virtual ones: two destructors, release, execute
    std::int64_t owners;
    std::exception_ptr exception;
    DarwinMutex mutex;
    DarwinCondition condition;
    std::uint32_t flags;
};
static_assert(offsetof(DarwinState, mutex) == 24 && offsetof(DarwinState, flags) == 136);

constexpr std::uint32_t hasValue = 1;
constexpr std::uint32_t isReady = 4;
constexpr std::uint32_t isDeferred = 8;

void waitForState(DarwinState *state, DarwinLock *lock) {
    if ((state->flags & (isReady | isDeferred)) == isDeferred)
        refuse("a deferred function");
    while ((state->flags & isReady) == 0)
        wait(&state->condition, lock);
}

void setException(DarwinState *state, const std::exception_ptr *exception) {
    lockMutex(&state->mutex);
    const bool isTaken = (state->flags & hasValue) != 0 || state->exception != nullptr;
    if (!isTaken) {
        state->exception = *exception;
        state->flags |= isReady;
        notify(&state->condition);
    }
    unlockMutex(&state->mutex);
    if (isTaken)
        throw std::future_error(std::future_errc::promise_already_satisfied);
}

[[noreturn]] void execute(DarwinState *) {
    throw std::future_error(std::future_errc::no_state);
}

// Only derived states are made, which have their own functions.
[[noreturn]] void refuseState(DarwinState *) {
    refuse("a shared state without a type");
}

struct StateTable {
    std::ptrdiff_t offset;
    const void *type;
    void (*functions[4])(DarwinState *);
};

} // namespace

void addConditions(Imports &imports) {
    imports.add(libCxx, "__ZNSt3__118condition_variable10notify_allEv", notify);
    imports.add(libCxx, "__ZNSt3__118condition_variable10notify_oneEv", notify);
    imports.add(libCxx, "__ZNSt3__118condition_variable4waitERNS_11unique_lockINS_5mutexEEE", wait);
    imports.add(libCxx, "__ZNSt3__118condition_variableD1Ev", destroyCondition);
    imports.add(libCxx, "__ZNSt3__117__assoc_sub_state10__sub_waitERNS_11unique_lockINS_5mutexEEE",
                waitForState);
    imports.add(libCxx, "__ZNSt3__117__assoc_sub_state13set_exceptionESt13exception_ptr",
                setException);
    imports.add(libCxx, "__ZNSt3__117__assoc_sub_state9__executeEv", execute);
    static const StateTable table = {0,
                                     runtimeSymbol("_ZTINSt3__117__assoc_sub_stateE"),
                                     {refuseState, refuseState, refuseState, refuseState}};
    imports.add(libCxx, "__ZTVNSt3__117__assoc_sub_stateE", &table);
}

} // namespace macho
