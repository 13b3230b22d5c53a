// Reference-counted objects behind the CoreFoundation types, and the platform's access to them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace platform {

enum class ObjectType { String, Boolean, Number, Dictionary, Data, DisplayStream };

// The first member of every object that CFRelease takes. An object starts with one reference.
struct ObjectHeader {
    constexpr explicit ObjectHeader(ObjectType type, bool immortal = false)
        : type(type), immortal(immortal) {}

    ObjectType type;
    bool immortal; // a constant: never released
    std::atomic<int> references = 1;
};

// An independent copy of `size` bytes, with one reference.
CFDataRef createData(const std::uint8_t *bytes, std::size_t size);

// The number that the dictionary holds for this key (the same address); nothing when the dictionary
// is null, lacks the key, or holds another type there.
std::optional<double> numberOf(CFDictionaryRef dictionary, const void *key);

// Destroys an object of type DisplayStream that is no longer referenced.
void destroyDisplayStream(ObjectHeader *stream);

} // namespace platform

struct __CFString {
    platform::ObjectHeader header;
};

struct __CFBoolean {
    platform::ObjectHeader header;
};

struct __CFNumber {
    platform::ObjectHeader header{platform::ObjectType::Number};
    double value = 0;
};

struct __CFDictionary {
    platform::ObjectHeader header{platform::ObjectType::Dictionary};
    struct Entry {
        const void *key;
        const void *value;
    };
    std::vector<Entry> entries;
    CFDictionaryReleaseCallBack releaseKey = nullptr;
    CFDictionaryReleaseCallBack releaseValue = nullptr;
};

struct __CFData {
    platform::ObjectHeader header{platform::ObjectType::Data};
    std::vector<std::uint8_t> bytes;
};
