// The JSON library with an allocator that throws. Its own allocator returns null when memory runs
// out, and the library then writes through the null pointer.
#pragma once

#include <cstdlib>
#include <cstring>
#include <new>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

// Uses malloc(), like the JSON library's standard allocator. Throws std::bad_alloc.
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

// The buffer and the writer that texts are built with.
using JsonText = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, JsonMemory>;
using JsonWriter = rapidjson::Writer<JsonText, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory>;

// Finished texts are kept in buffers with the JSON library's standard allocator. The functions
// below check that there is memory before they write to it.

// The text of `kept` with a terminating zero. Throws std::bad_alloc.
inline const char *terminated(rapidjson::StringBuffer &kept) {
    if (kept.GetSize() == 0) { // may have no memory yet; any other text has room for the zero
        if (kept.Push(1) == nullptr) {
            kept = rapidjson::StringBuffer();
            throw std::bad_alloc();
        }
        kept.Pop(1);
    }
    return kept.GetString();
}

// Replaces the contents of `kept`. Throws std::bad_alloc; `kept` is then empty.
inline void keep(const JsonText &text, rapidjson::StringBuffer &kept) {
    kept = rapidjson::StringBuffer(); // a failed reallocation would leak the buffer's old memory
    char *bytes = kept.Push(text.GetSize() + 1);
    if (bytes == nullptr) {
        kept = rapidjson::StringBuffer();
        throw std::bad_alloc();
    }
    std::memcpy(bytes, text.GetString(), text.GetSize() + 1);
    kept.Pop(1);
}
