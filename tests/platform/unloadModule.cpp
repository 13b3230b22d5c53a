#include "tests/platform/unloadModule.h"

#include <cstdint>

namespace {

// Like the library's manager: a static object that stops the running stream.
struct Owner {
    ~Owner() {
        if (run->stopInDestructor)
            run->stopResult = CGDisplayStreamStop(run->stream);
    }

    ModuleRun *run = nullptr;
};

Owner owner;

} // namespace

extern "C" __attribute__((visibility("default"))) CGError startInModule(CGDirectDisplayID display,
                                                                        ModuleRun *run) {
    owner.run = run;
    run->queue = dispatch_queue_create("module", nullptr);
    run->stream = CGDisplayStreamCreateWithDispatchQueue(
        display, 64, 48, 0x42475241, nullptr, run->queue,
        ^(CGDisplayStreamFrameStatus status, std::uint64_t, IOSurfaceRef,
          CGDisplayStreamUpdateRef) {
          if (status == kCGDisplayStreamFrameStatusFrameComplete) {
              ++run->frames;
              run->frames.notify_all();
          }
        });
    return CGDisplayStreamStart(run->stream);
}
