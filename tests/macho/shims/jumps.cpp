// setjmp() and longjmp(). macOS's buffer has 148 bytes, fewer than this system's. It is filled with
// the registers that a function keeps: rbx, rbp, r12 to r15, the stack pointer and the place to
// return to. macOS stores the signal mask, too, which the programs do not change between the two.
#include "tests/macho/shims/system.h"

asm(R"(
    .text
machoSetJump:
    mov %rbx, (%rdi)
    mov %rbp, 8(%rdi)
    mov %r12, 16(%rdi)
    mov %r13, 24(%rdi)
    mov %r14, 32(%rdi)
    mov %r15, 40(%rdi)
    lea 8(%rsp), %rax
    mov %rax, 48(%rdi)
    mov (%rsp), %rax
    mov %rax, 56(%rdi)
    xor %eax, %eax
    ret
machoLongJump:
    mov (%rdi), %rbx
    mov 8(%rdi), %rbp
    mov 16(%rdi), %r12
    mov 24(%rdi), %r13
    mov 32(%rdi), %r14
    mov 40(%rdi), %r15
    mov 48(%rdi), %rsp
    mov %esi, %eax
    test %eax, %eax
    jnz 1f
    inc %eax
1:  jmp *56(%rdi)
)");

extern "C" {
int machoSetJump(void *buffer);
[[noreturn]] void machoLongJump(void *buffer, int value);
}

namespace macho {

void addJumps(Imports &imports) {
    imports.add(libSystem, "_setjmp", machoSetJump);
    imports.add(libSystem, "_longjmp", machoLongJump);
}

} // namespace macho
