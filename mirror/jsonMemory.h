// The JSON library with an allocator that throws. Its own hands out null when memory is refused,
// and what it then writes to is null.
#pragma once

#include <cstdlib>
#include <cstring>
#include <new>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

// The C library's memory, like the JSON library's standard allocator. Throws std::bad_alloc.
class JsonMemory {
public:
    static const bool kNeedFree = true; // the name is the JSON library's

    void *Malloc(std::size_t size) { return size == 0 ? nullptr : orThrow(std::malloc(size)); }
    void *Realloc(void *old, std::size_t, std::size_t size) {
        if (size != 0)
            return orThrow(std::realloc(old, size));
        std::free(old);
        return nullptr;
    }
    static void Free(void *memory) { std::free(memory); }

private:
    static void *orThrow(void *memory) {
        if (memory == nullptr)
            throw std::bad_alloc();
        return memory;
    }
};

// Where a text is written.
using JsonText = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, JsonMemory>;
using JsonWriter = rapidjson::Writer<JsonText, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory>;

// The buffers that texts are kept in have the JSON library's standard allocator, and only what is
// known to be there is written to.

// The text of `kept` with a zero behind it. Throws std::bad_alloc.
inline const char *terminated(rapidjson::StringBuffer &kept) {
    if (kept.GetSize() == 0) { // may have no memory yet; a text has room for the zero
        if (kept.Push(1) == nullptr) {
            kept = rapidjson::StringBuffer();
            throw std::bad_alloc();
        }
        kept.Pop(1);
    }
    return kept.GetString();
}

// Replaces what is in `kept`. Throws std::bad_alloc; `kept` is then empty.
inline void keep(const JsonText &text, rapidjson::StringBuffer &kept) {
    kept = rapidjson::StringBuffer(); // a refusal would cost what a buffer holds
    char *bytes = kept.Push(text.GetSize() + 1);
    if (bytes == nullptr) {
        kept = rapidjson::StringBuffer();
        throw std::bad_alloc();
    }
    std::memcpy(bytes, text.GetString(), text.GetSize() + 1);
    kept.Pop(1);
}
