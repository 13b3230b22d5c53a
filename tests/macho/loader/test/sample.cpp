// A dylib for the loader's tests, with one of each thing that the loader handles.

#include <setjmp.h>

using Callback = void (*)(int);

namespace {

Callback note = nullptr; // set by the test

int notes[8];
int noteCount = 0;

// Called before the test can set `note`.
void remember(int number) {
    notes[noteCount++] = number;
}

struct Noting {
    explicit Noting(int number) : number(number) { remember(number); }
    ~Noting() { note(-number); }
    int number;
};

Noting first(1);
Noting second(2);

jmp_buf place;

const char *volatile words[] = {"rebased", "pointers"};

} // namespace

extern "C" {

void setNote(Callback callback) {
    note = callback;
}

int noted(int index) {
    return index < noteCount ? notes[index] : 0;
}

const char *word(int index) {
    return words[index];
}

int zeroFilled[1000];

extern int *const constant;
int *const constant = zeroFilled;

void throwNumber(int number) {
    throw number;
}

// An exception from `callback` passes through these frames. The first uses callee-saved registers,
// which are restored only if the unwinder knows where it saved them.
void plainFrame(Callback callback, long *values) {
    long a = values[0], b = values[1], c = values[2], d = values[3], e = values[4], f = values[5];
    callback(7);
    values[0] = b, values[1] = c, values[2] = d, values[3] = e, values[4] = f, values[5] = a;
}

void catchingFrame(Callback callback, long *values) {
    try {
        callback(7);
    } catch (int) {
        values[6] = 1;
        throw;
    }
}

// Calls `frame`, which throws, and then uses values that were in registers before the call.
long catches(void (*frame)(Callback, long *), Callback callback, long *values) {
    long a = values[0], b = values[1], c = values[2], d = values[3], e = values[4];
    long caught = 0;
    try {
        frame(callback, values);
    } catch (int number) {
        caught = number;
    }
    return caught + a * 10 + b * 100 + c * 1000 + d * 10000 + e * 100000;
}

// `callback` calls jumpBack(), which does not return. The values are in registers before that.
int jumps(Callback callback, int wanted, const int *values) {
    const int a = values[0], b = values[1], c = values[2];
    if (const int number = setjmp(place))
        return number + a * 10 + b * 100 + c * 1000;
    callback(wanted);
    return 0;
}

void jumpBack(int number) {
    longjmp(place, number);
}
}
