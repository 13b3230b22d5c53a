// Reference-counted objects behind the CoreFoundation types, and what the platform reads of them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace x11 {

enum class ObjectType { String, Boolean, Number, Dictionary, Data, DisplayStream };

// The first member of every object that CFRelease takes. An object begins with one reference.
struct ObjectHeader {
    constexpr explicit ObjectHeader(ObjectType type, bool immortal = false)
        : type(type), immortal(immortal) {}

    ObjectType type;
    bool immortal; // a constant: never released
    std::atomic<int> references = 1;
};

// An independent copy of `size` bytes, with one reference.
CFDataRef createData(const std::uint8_t *bytes, std::size_t size);

// The number that the dictionary holds for exactly this key; nothing when the dictionary is null,
// has no such key, or holds something else there.
std::optional<double> numberOf(CFDictionaryRef dictionary, const void *key);

// Gives back an object that is no longer referenced; its type is DisplayStream.
void destroyDisplayStream(ObjectHeader *stream);

} // namespace x11

struct __CFString {
    x11::ObjectHeader header;
};

struct __CFBoolean {
    x11::ObjectHeader header;
};

struct __CFNumber {
    x11::ObjectHeader header{x11::ObjectType::Number};
    double value = 0;
};

struct __CFDictionary {
    x11::ObjectHeader header{x11::ObjectType::Dictionary};
    struct Entry {
        const void *key;
        const void *value;
    };
    std::vector<Entry> entries;
    CFDictionaryReleaseCallBack releaseKey = nullptr;
    CFDictionaryReleaseCallBack releaseValue = nullptr;
};

struct __CFData {
    x11::ObjectHeader header{x11::ObjectType::Data};
    std::vector<std::uint8_t> bytes;
};
