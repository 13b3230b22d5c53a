#include "tests/macho/host/libraryImports.h"
#include "tests/macho/shims/system.h"

#include <CoreGraphics/CoreGraphics.h>

namespace macho {

namespace {

void addFrameworks(Imports &imports) {
    imports.add(coreGraphics, "_CGGetActiveDisplayList", CGGetActiveDisplayList);
    imports.add(coreGraphics, "_CGDisplayCreateImage", CGDisplayCreateImage);
    imports.add(coreGraphics, "_CGImageGetWidth", CGImageGetWidth);
    imports.add(coreGraphics, "_CGImageGetHeight", CGImageGetHeight);
    imports.add(coreGraphics, "_CGImageGetBitsPerPixel", CGImageGetBitsPerPixel);
    imports.add(coreGraphics, "_CGImageGetDataProvider", CGImageGetDataProvider);
    imports.add(coreGraphics, "_CGImageRelease", CGImageRelease);
    imports.add(coreGraphics, "_CGDataProviderCopyData", CGDataProviderCopyData);
    imports.add(coreGraphics, "_CGDisplayStreamCreateWithDispatchQueue",
                CGDisplayStreamCreateWithDispatchQueue);
    imports.add(coreGraphics, "_CGDisplayStreamStart", CGDisplayStreamStart);
    imports.add(coreGraphics, "_CGDisplayStreamStop", CGDisplayStreamStop);
    imports.add(coreGraphics, "_kCGDisplayStreamMinimumFrameTime",
                &kCGDisplayStreamMinimumFrameTime);
    imports.add(coreGraphics, "_kCGDisplayStreamShowCursor", &kCGDisplayStreamShowCursor);
    imports.add(coreFoundation, "_CFNumberCreate", CFNumberCreate);
    imports.add(coreFoundation, "_CFDictionaryCreate", CFDictionaryCreate);
    imports.add(coreFoundation, "_CFDataGetBytePtr", CFDataGetBytePtr);
    imports.add(coreFoundation, "_CFRelease", CFRelease);
    imports.add(coreFoundation, "_kCFAllocatorDefault", &kCFAllocatorDefault);
    imports.add(coreFoundation, "_kCFBooleanFalse", &kCFBooleanFalse);
    imports.add(ioSurface, "_IOSurfaceLock", IOSurfaceLock);
    imports.add(ioSurface, "_IOSurfaceUnlock", IOSurfaceUnlock);
    imports.add(ioSurface, "_IOSurfaceGetBaseAddress", IOSurfaceGetBaseAddress);
    imports.add(libSystem, "_dispatch_queue_create", dispatch_queue_create);
}

} // namespace

const Imports &libraryImports() {
    static const Imports imports = [] {
        Imports all;
        addSystem(all);
        addCxxRuntime(all);
        addFrameworks(all);
        return all;
    }();
    return imports;
}

} // namespace macho
