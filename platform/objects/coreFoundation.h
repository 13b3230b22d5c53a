// Reference-counted objects behind the CoreFoundation types, and what the platform reads of them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace platform {

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
