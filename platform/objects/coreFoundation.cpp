#include "platform/objects/coreFoundation.h"

#include <algorithm>
#include <memory>

namespace {

constinit __CFBoolean falseObject{platform::ObjectHeader(platform::ObjectType::Boolean, true)};

} // namespace

constinit const CFAllocatorRef kCFAllocatorDefault = nullptr;
constinit const CFBooleanRef kCFBooleanFalse = &falseObject;

namespace platform {

namespace {

const __CFDictionary::Entry *find(const __CFDictionary &dictionary, const void *key) {
    const auto found = std::find_if(dictionary.entries.begin(), dictionary.entries.end(),
                                    [key](const auto &entry) { return entry.key == key; });
    return found == dictionary.entries.end() ? nullptr : &*found;
}

void destroyDictionary(const __CFDictionary *dictionary) {
    for (const auto &entry : dictionary->entries) {
        if (dictionary->releaseKey != nullptr)
            dictionary->releaseKey(kCFAllocatorDefault, entry.key);
        if (dictionary->releaseValue != nullptr)
            dictionary->releaseValue(kCFAllocatorDefault, entry.value);
    }
    delete dictionary;
}

} // namespace

CFDataRef createData(const std::uint8_t *bytes, std::size_t size) {
    auto data = std::make_unique<__CFData>();
    data->bytes.assign(bytes, bytes + size);
    return data.release();
}

std::optional<double> numberOf(CFDictionaryRef dictionary, const void *key) {
    const __CFDictionary::Entry *entry = dictionary == nullptr ? nullptr : find(*dictionary, key);
    if (entry == nullptr || entry->value == nullptr)
        return std::nullopt;
    const auto *header = static_cast<const ObjectHeader *>(entry->value);
    if (header->type != ObjectType::Number)
        return std::nullopt;
    return static_cast<const __CFNumber *>(entry->value)->value;
}

} // namespace platform

// Null unless the type is a double: other numbers are not supported.
CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void *valuePtr) {
    if (theType != kCFNumberDoubleType || valuePtr == nullptr)
        return nullptr;
    try {
        auto number = std::make_unique<__CFNumber>();
        number->value = *static_cast<const double *>(valuePtr);
        return number.release();
    } catch (...) {
        return nullptr;
    }
}

// Of the callbacks, only retain and release are used. Keys are always compared by address, and of
// equal keys the first one counts.
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void **keys, const void **values,
                                   CFIndex numValues, const CFDictionaryKeyCallBacks *keyCallBacks,
                                   const CFDictionaryValueCallBacks *valueCallBacks) {
    if (numValues < 0 || (numValues > 0 && (keys == nullptr || values == nullptr)))
        return nullptr;
    try {
        auto dictionary = std::make_unique<__CFDictionary>();
        dictionary->entries.reserve(static_cast<std::size_t>(numValues));
        for (CFIndex i = 0; i < numValues; ++i) {
            if (platform::find(*dictionary, keys[i]) != nullptr)
                continue;
            __CFDictionary::Entry entry{keys[i], values[i]};
            if (keyCallBacks != nullptr && keyCallBacks->retain != nullptr)
                entry.key = keyCallBacks->retain(allocator, entry.key);
            if (valueCallBacks != nullptr && valueCallBacks->retain != nullptr)
                entry.value = valueCallBacks->retain(allocator, entry.value);
            dictionary->entries.push_back(entry);
        }
        if (keyCallBacks != nullptr)
            dictionary->releaseKey = keyCallBacks->release;
        if (valueCallBacks != nullptr)
            dictionary->releaseValue = valueCallBacks->release;
        return dictionary.release();
    } catch (...) {
        return nullptr;
    }
}

const UInt8 *CFDataGetBytePtr(CFDataRef theData) {
    return theData == nullptr ? nullptr : theData->bytes.data();
}

// A null reference is ignored.
void CFRelease(CFTypeRef cf) {
    auto *header = static_cast<platform::ObjectHeader *>(const_cast<void *>(cf));
    if (header == nullptr || header->immortal || header->references.fetch_sub(1) > 1)
        return;
    switch (header->type) {
    case platform::ObjectType::String:
    case platform::ObjectType::Boolean:
        break; // always constants
    case platform::ObjectType::Number:
        delete static_cast<const __CFNumber *>(cf);
        break;
    case platform::ObjectType::Dictionary:
        platform::destroyDictionary(static_cast<const __CFDictionary *>(cf));
        break;
    case platform::ObjectType::Data:
        delete static_cast<const __CFData *>(cf);
        break;
    case platform::ObjectType::DisplayStream:
        platform::destroyDisplayStream(header);
        break;
    }
}
