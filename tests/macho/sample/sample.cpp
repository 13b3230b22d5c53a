// A dylib with one of everything that the loader handles, for its tests.

using Callback = void (*)(int);

namespace {

Callback note = nullptr; // set by the test

int notes[8];
int noteCount = 0;

// Before the test can set `note`.
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

struct ThreadNoting {
    ~ThreadNoting() { note(number); }
    int number;
};

thread_local int counter = 7;
thread_local int zero;
thread_local ThreadNoting atThreadEnd{100};

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

// A copy of each variable for each thread.
int count(void) {
    return ++counter * 1000 + ++zero;
}

void noteAtThreadEnd(void) {
    atThreadEnd.number = 101;
}

// Everything that an address lookup must leave alone is in use across it.
double countAmongOthers(double a, double b, int c, int d) {
    const int counted = count();
    return a * 1e9 + b * 1e8 + c * 1e7 + d * 1e6 + counted;
}

void throwNumber(int number) {
    throw number;
}

// Frames of every kind, which an exception from `callback` passes through. What each keeps in
// registers of its caller's comes back only if the unwinder knows where it was put.
#define KEEPS_REGISTERS                                                                            \
    long a = values[0], b = values[1], c = values[2], d = values[3], e = values[4], f = values[5]; \
    callback(7);                                                                                   \
    values[0] = b, values[1] = c, values[2] = d, values[3] = e, values[4] = f, values[5] = a;

void plainFrame(Callback callback, long *values) {
    KEEPS_REGISTERS
}

void hugeFrame(Callback callback, long *values) {
    char room[20000];
    asm volatile("" : : "r"(room) : "memory"); // all of it is needed
    KEEPS_REGISTERS
}

void growingFrame(Callback callback, long *values) {
    volatile char *room = static_cast<char *>(__builtin_alloca(static_cast<unsigned>(values[6])));
    room[0] = 1;
    KEEPS_REGISTERS
    room[1] = room[0];
}

void catchingFrame(Callback callback, long *values) {
    try {
        callback(7);
    } catch (int) {
        values[7] = 1;
        throw;
    }
}

// Its frame moves in a way that only a full record can tell.
void oddFrame(Callback callback, long *values);

// Calls `frame`, which throws, and works on with what it held in registers before.
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
}

asm(R"(
    .globl _oddFrame
    .p2align 4
_oddFrame:
    .cfi_startproc
    pushq %rbx
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %rbx, 0
    subq $16, %rsp
    .cfi_adjust_cfa_offset 16
    movq %r12, 8(%rsp)
    .cfi_rel_offset %r12, 8
    movq $0, %rbx
    movq $0, %r12
    movq %rdi, %rax
    movl $7, %edi
    callq *%rax
    movq 8(%rsp), %r12
    addq $16, %rsp
    .cfi_adjust_cfa_offset -16
    popq %rbx
    .cfi_adjust_cfa_offset -8
    retq
    .cfi_endproc
)");
