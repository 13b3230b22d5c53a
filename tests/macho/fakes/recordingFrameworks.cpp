#include "tests/macho/fakes/recordingFrameworks.h"

#include <Block.h>
#include <algorithm>
#include <cstring>
#include <thread>

namespace macho::fake {

namespace {

Object *constant() {
    Object *object = frameworks().objects.make(Kind::Constant);
    object->immortal = true;
    return object;
}

template <class Reference> Reference as(const Object *object) {
    return reinterpret_cast<Reference>(const_cast<Object *>(object));
}

Objects &objects() {
    return frameworks().objects;
}

void record(const std::string &call) {
    frameworks().record(call);
}

std::string text(std::size_t number) {
    return std::to_string(number);
}

const Display *displayWith(CGDirectDisplayID id) {
    for (const Display &display : frameworks().script.displays)
        if (display.id == id)
            return &display;
    return nullptr;
}

// The display of an image; null for a null image.
const Display *displayOf(const std::string &call, CGImageRef image) {
    Object *object = image == nullptr ? nullptr : objects().use(call, Kind::Image, image);
    record(call + "(" + nameOf(object) + ")");
    return object == nullptr ? nullptr : displayWith(static_cast<CGDirectDisplayID>(object->value));
}

std::string optionsText(const Object *dictionary) {
    std::string all;
    for (const auto &[key, value] : dictionary->entries) {
        const Object *object = objects().use("a stream's option", value);
        all += all.empty() ? "" : ", ";
        if (key == kCGDisplayStreamMinimumFrameTime && object != nullptr &&
            object->kind == Kind::Number)
            all += "at least " + std::to_string(object->value) + " s a frame";
        else if (key == kCGDisplayStreamShowCursor && value == kCFBooleanFalse)
            all += "no cursor";
        else
            objects().note("a stream with an unknown option");
    }
    return all;
}

CGError startOrStop(const std::string &call, CGDisplayStreamRef stream, CGError result) {
    if (stream == nullptr) {
        record(call + "(null)");
        return kCGErrorIllegalArgument;
    }
    record(call + "(" + nameOf(objects().use(call, Kind::Stream, stream)) + ")");
    return result;
}

} // namespace

} // namespace macho::fake

using namespace macho::fake;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanFalse = as<CFBooleanRef>(constant());
const CFStringRef kCGDisplayStreamMinimumFrameTime = as<CFStringRef>(constant());
const CFStringRef kCGDisplayStreamShowCursor = as<CFStringRef>(constant());

// Displays and images.

CGError CGGetActiveDisplayList(std::uint32_t room, CGDirectDisplayID *list, std::uint32_t *count) {
    const auto &displays = frameworks().script.displays;
    const std::size_t told =
        list == nullptr ? displays.size() : std::min<std::size_t>(room, displays.size());
    for (std::size_t i = 0; list != nullptr && i < told; ++i)
        list[i] = displays[i].id;
    *count = static_cast<std::uint32_t>(told);
    record("CGGetActiveDisplayList(" + text(room) + ", " + (list == nullptr ? "null" : "list") +
           ") = " + text(told));
    return kCGErrorSuccess;
}

CGImageRef CGDisplayCreateImage(CGDirectDisplayID id) {
    const Display *display = displayWith(id);
    Object *image = display == nullptr ? nullptr : objects().make(Kind::Image);
    if (image != nullptr)
        image->value = id;
    record("CGDisplayCreateImage(" + text(id) + ") = " + nameOf(image));
    return as<CGImageRef>(image);
}

std::size_t CGImageGetWidth(CGImageRef image) {
    const Display *display = displayOf("CGImageGetWidth", image);
    return display == nullptr ? 0 : display->width;
}

std::size_t CGImageGetHeight(CGImageRef image) {
    const Display *display = displayOf("CGImageGetHeight", image);
    return display == nullptr ? 0 : display->height;
}

std::size_t CGImageGetBitsPerPixel(CGImageRef image) {
    const Display *display = displayOf("CGImageGetBitsPerPixel", image);
    return display == nullptr ? 0 : display->bitsPerPixel;
}

CGDataProviderRef CGImageGetDataProvider(CGImageRef image) {
    const Display *display = displayOf("CGImageGetDataProvider", image);
    if (display == nullptr)
        return nullptr;
    Object *provider = objects().make(Kind::Provider);
    provider->owner = objects().use("CGImageGetDataProvider", image);
    provider->bytes = display->bytes;
    return as<CGDataProviderRef>(provider);
}

void CGImageRelease(CGImageRef image) {
    if (image == nullptr) {
        record("CGImageRelease(null)");
        return;
    }
    record("CGImageRelease(" + nameOf(objects().use("CGImageRelease", Kind::Image, image)) + ")");
    objects().release("CGImageRelease", image);
}

CFDataRef CGDataProviderCopyData(CGDataProviderRef provider) {
    Object *from = provider == nullptr
                       ? nullptr
                       : objects().use("CGDataProviderCopyData", Kind::Provider, provider);
    Object *data = from == nullptr ? nullptr : objects().make(Kind::Data);
    if (data != nullptr)
        data->bytes = from->bytes;
    record("CGDataProviderCopyData(" + nameOf(from) + ") = " + nameOf(data));
    return as<CFDataRef>(data);
}

// CoreFoundation.

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void *value) {
    if (allocator != nullptr || type != kCFNumberDoubleType || value == nullptr) {
        objects().note("CFNumberCreate with the type " + std::to_string(type));
        return nullptr;
    }
    Object *number = objects().make(Kind::Number);
    std::memcpy(&number->value, value, sizeof number->value);
    record("CFNumberCreate(" + std::to_string(number->value) + ") = " + nameOf(number));
    return as<CFNumberRef>(number);
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void **keys, const void **values,
                                   CFIndex count, const CFDictionaryKeyCallBacks *keyCallBacks,
                                   const CFDictionaryValueCallBacks *valueCallBacks) {
    if (allocator != nullptr || keyCallBacks != nullptr || valueCallBacks != nullptr)
        objects().note("CFDictionaryCreate with an allocator or callbacks");
    Object *dictionary = objects().make(Kind::Dictionary);
    for (CFIndex i = 0; i < count; ++i) {
        objects().use("CFDictionaryCreate", Kind::Constant, keys[i]);
        objects().use("CFDictionaryCreate", values[i]);
        dictionary->entries.emplace_back(keys[i], values[i]);
    }
    record("CFDictionaryCreate(" + text(static_cast<std::size_t>(count)) +
           ") = " + nameOf(dictionary));
    return as<CFDictionaryRef>(dictionary);
}

const UInt8 *CFDataGetBytePtr(CFDataRef data) {
    Object *object = objects().use("CFDataGetBytePtr", Kind::Data, data);
    record("CFDataGetBytePtr(" + nameOf(object) + ")");
    return object == nullptr ? nullptr : object->bytes.data();
}

void CFRelease(CFTypeRef reference) {
    record("CFRelease(" + nameOf(objects().use("CFRelease", reference)) + ")");
    objects().release("CFRelease", reference);
}

// Streams.

dispatch_queue_t dispatch_queue_create(const char *label, dispatch_queue_attr_t attributes) {
    Object *queue = objects().make(Kind::Queue);
    record("dispatch_queue_create(\"" + std::string(label) + "\", " +
           (attributes == nullptr ? "serial" : "other") + ") = " + nameOf(queue));
    return as<dispatch_queue_t>(queue);
}

CGDisplayStreamRef CGDisplayStreamCreateWithDispatchQueue(
    CGDirectDisplayID id, std::size_t width, std::size_t height, std::int32_t format,
    CFDictionaryRef options, dispatch_queue_t queue, CGDisplayStreamFrameAvailableHandler handler) {
    const std::string call = "CGDisplayStreamCreateWithDispatchQueue";
    Object *dictionary = objects().use(call, Kind::Dictionary, options);
    objects().use(call, Kind::Queue, queue);
    const bool refused = frameworks().script.refuseStreams || displayWith(id) == nullptr;
    Object *stream = refused ? nullptr : objects().make(Kind::Stream);
    char code[5] = {};
    for (int i = 0; i < 4; ++i)
        code[i] = static_cast<char>(format >> (24 - 8 * i));
    record(call + "(" + text(id) + ", " + text(width) + " x " + text(height) + ", " + code + ", {" +
           (dictionary == nullptr ? "" : optionsText(dictionary)) + "}) = " + nameOf(stream));
    if (stream != nullptr) {
        if (frameworks().handler != nullptr)
            Block_release(frameworks().handler);
        frameworks().handler = Block_copy(handler);
    }
    return as<CGDisplayStreamRef>(stream);
}

CGError CGDisplayStreamStart(CGDisplayStreamRef stream) {
    return startOrStop("CGDisplayStreamStart", stream, frameworks().script.startResult);
}

CGError CGDisplayStreamStop(CGDisplayStreamRef stream) {
    return startOrStop("CGDisplayStreamStop", stream, frameworks().script.stopResult);
}

// Surfaces.

IOReturn IOSurfaceLock(IOSurfaceRef surface, IOSurfaceLockOptions options, std::uint32_t *) {
    Object *object = objects().use("IOSurfaceLock", Kind::Surface, surface);
    if (options != kIOSurfaceLockReadOnly)
        objects().note("IOSurfaceLock with the options " + text(options));
    if (object != nullptr)
        ++object->locks;
    record("IOSurfaceLock(" + nameOf(object) + ")");
    return 0;
}

IOReturn IOSurfaceUnlock(IOSurfaceRef surface, IOSurfaceLockOptions options, std::uint32_t *) {
    Object *object = objects().use("IOSurfaceUnlock", Kind::Surface, surface);
    if (options != kIOSurfaceLockReadOnly)
        objects().note("IOSurfaceUnlock with the options " + text(options));
    if (object != nullptr && --object->locks < 0)
        objects().note("IOSurfaceUnlock of " + nameOf(object) + ", which is not locked");
    record("IOSurfaceUnlock(" + nameOf(object) + ")");
    return 0;
}

void *IOSurfaceGetBaseAddress(IOSurfaceRef surface) {
    Object *object = objects().use("IOSurfaceGetBaseAddress", Kind::Surface, surface);
    if (object != nullptr && object->locks == 0)
        objects().note("IOSurfaceGetBaseAddress of " + nameOf(object) + ", which is not locked");
    record("IOSurfaceGetBaseAddress(" + nameOf(object) + ")");
    return object == nullptr ? nullptr : object->bytes.data();
}

} // extern "C"

namespace macho::fake {

void Frameworks::record(const std::string &call) {
    const std::lock_guard lock(mutex);
    recorded.push_back(call);
}

std::vector<std::string> Frameworks::calls() const {
    const std::lock_guard lock(mutex);
    return recorded;
}

void Frameworks::forget() {
    if (handler != nullptr)
        Block_release(handler);
    handler = nullptr;
    objects.forget();
    const std::lock_guard lock(mutex);
    recorded = {};
}

Frameworks &frameworks() {
    static Frameworks all;
    return all;
}

void deliver(CGDisplayStreamFrameStatus status, const std::vector<std::uint32_t> *pixels) {
    Object *surface = nullptr;
    if (pixels != nullptr) {
        surface = objects().make(Kind::Surface);
        surface->bytes.resize(pixels->size() * sizeof(std::uint32_t));
        std::memcpy(surface->bytes.data(), pixels->data(), surface->bytes.size());
    }
    std::thread([status, surface] {
        frameworks().handler(status, 0, as<IOSurfaceRef>(surface), nullptr);
    }).join();
    if (surface == nullptr)
        return;
    if (surface->locks != 0)
        objects().note(nameOf(surface) + " was left locked");
    if (surface->references != 1)
        objects().note(nameOf(surface) + " was released by who did not own it");
    surface->references = 0;
}

} // namespace macho::fake
