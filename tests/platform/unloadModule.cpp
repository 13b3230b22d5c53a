#include "tests/platform/unloadModule.h"

namespace {

// Like the library's own manager: a static object that stops what runs.
struct Owner {
    ~Owner() {
        if (stopResult != nullptr)
            *stopResult = CGDisplayStreamStop(stream);
    }

    CGDisplayStreamRef stream = nullptr;
    CGError *stopResult = nullptr;
};

Owner owner;

} // namespace

extern "C" __attribute__((visibility("default"))) CGError
startInModule(CGDirectDisplayID display, int *frames, CGError *stopResult) {
    owner.stopResult = stopResult;
    owner.stream = CGDisplayStreamCreateWithDispatchQueue(
        display, 64, 48, 0x42475241, nullptr, dispatch_queue_create("module", nullptr),
        ^(CGDisplayStreamFrameStatus status, std::uint64_t, IOSurfaceRef,
          CGDisplayStreamUpdateRef) {
          if (status == kCGDisplayStreamFrameStatusFrameComplete)
              __atomic_add_fetch(frames, 1, __ATOMIC_SEQ_CST);
        });
    return CGDisplayStreamStart(owner.stream);
}
