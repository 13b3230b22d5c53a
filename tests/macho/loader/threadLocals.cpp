#include "tests/macho/loader/threadLocals.h"

#include <algorithm>
#include <cstdlib>

namespace {

// As the compiler expects it: a call of the first field, with the descriptor, gives the address.
struct Descriptor {
    void *(*find)(Descriptor *);
    macho::ThreadLocals *owner; // the loader's to use
    std::uint64_t offset;
};

} // namespace

extern "C" {
void *machoThreadLocalAddress(void *descriptor) {
    auto *variable = static_cast<Descriptor *>(descriptor);
    return variable->owner->block() + variable->offset;
}
void *machoThreadLocalThunk(Descriptor *);
}

// Callers expect every register but rax to be kept.
asm(R"(
    .text
    .globl machoThreadLocalThunk
    .type machoThreadLocalThunk, @function
machoThreadLocalThunk:
    push %rbp
    mov %rsp, %rbp
    push %rcx
    push %rdx
    push %rsi
    push %rdi
    push %r8
    push %r9
    push %r10
    push %r11
    sub $512, %rsp
    and $-16, %rsp
    fxsave64 (%rsp)
    call machoThreadLocalAddress@PLT
    fxrstor64 (%rsp)
    lea -64(%rbp), %rsp
    pop %r11
    pop %r10
    pop %r9
    pop %r8
    pop %rdi
    pop %rsi
    pop %rdx
    pop %rcx
    pop %rbp
    ret
    .size machoThreadLocalThunk, .-machoThreadLocalThunk
)");

namespace macho {

ThreadLocals::ThreadLocals(const ImageFile &file, const Mapping &mapping) {
    const std::vector<Section> variables = file.sectionsOfType(sectionThreadLocalVariables);
    if (variables.empty())
        return;
    // The initial values and then the zeros, side by side.
    std::uint64_t start = file.size();
    std::uint64_t initialEnd = 0;
    std::uint64_t end = 0;
    for (const SectionType type : {sectionThreadLocalData, sectionThreadLocalZeroFill})
        for (const Section &section : file.sectionsOfType(type)) {
            start = std::min(start, section.address);
            end = std::max(end, section.address + section.size);
            if (type == sectionThreadLocalData)
                initialEnd = end;
        }
    if (end <= start)
        throw LoadError("the image has thread-local variables without values");
    blockSize = end - start;
    if (initialEnd > start)
        initial = Bytes(mapping.at<std::uint8_t>(start), initialEnd - start);
    if (pthread_key_create(&key, nullptr) != 0)
        throw LoadError("there is no key for the image's thread-local variables");
    for (const Section &section : variables) {
        if (section.address % alignof(Descriptor) != 0)
            throw LoadError("the thread-local variables lie at an odd place");
        auto *first = mapping.at<Descriptor>(section.address);
        for (Descriptor *variable = first; variable != first + section.size / sizeof(Descriptor);
             ++variable) {
            if (variable->offset >= blockSize)
                throw LoadError("a thread-local variable lies outside its thread's copy");
            variable->find = machoThreadLocalThunk;
            variable->owner = this;
        }
    }
}

ThreadLocals::~ThreadLocals() {
    if (blockSize > 0)
        pthread_key_delete(key);
}

std::uint8_t *ThreadLocals::block() {
    if (void *mine = pthread_getspecific(key))
        return static_cast<std::uint8_t *>(mine);
    auto made = std::make_unique<std::uint8_t[]>(blockSize);
    std::copy(initial.begin(), initial.end(), made.get());
    pthread_setspecific(key, made.get());
    const std::lock_guard lock(mutex);
    return blocks.emplace_back(std::move(made)).get();
}

void ThreadLocals::bootstrap() {
    std::abort();
}

} // namespace macho
