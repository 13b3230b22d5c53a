// The first frame of a configuration, read during its copy: a reader gets all of it or nothing.
#include "mirror/sharedFlag.h"
#include "tests/mirror/manager.h"
#include "tests/mirror/scriptedSystem.h"
#include "tests/support/lightReceiver.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <semaphore.h>
#include <sys/mman.h>
#include <utility>

namespace {

sem_t held; // posted when a thread is held
sem_t free_;

// Memory whose second half blocks the thread that accesses it, one thread at a time. Handles
// SIGSEGV meanwhile; at most one object at a time.
class HeldMemory {
public:
    explicit HeldMemory(std::size_t bytes) // zeroed; an even number of pages
        : base(static_cast<unsigned char *>(
              mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          size(bytes) {
        if (base == MAP_FAILED)
            std::abort();
        sem_init(&held, 0, 0);
        sem_init(&free_, 0, 0);
        struct sigaction action = {};
        action.sa_handler = hold;
        sigaction(SIGSEGV, &action, &before);
    }
    ~HeldMemory() {
        sigaction(SIGSEGV, &before, nullptr);
        munmap(base, size);
        sem_destroy(&held);
        sem_destroy(&free_);
    }
    HeldMemory(const HeldMemory &) = delete;
    HeldMemory &operator=(const HeldMemory &) = delete;

    unsigned char *bytes() const { return base; }

    void holdReaders() const { allow(PROT_NONE); }
    void holdWriters() const { allow(PROT_READ); }
    void open() const { allow(PROT_READ | PROT_WRITE); } // a held thread stays held

    // Waits until a thread is blocked on the memory.
    void waitForBlockedThread() {
        while (sem_wait(&held) != 0) {
        }
        isHeld = true;
    }
    // Opens the memory and resumes the held thread, if any.
    void release() {
        open();
        if (isHeld)
            sem_post(&free_);
        isHeld = false;
    }

private:
    // Runs on the held thread.
    static void hold(int) {
        sem_post(&held);
        while (sem_wait(&free_) != 0) {
        }
    }
    void allow(int protection) const { mprotect(base + size / 2, size / 2, protection); }

    unsigned char *base;
    std::size_t size;
    bool isHeld = false; // used only by the thread that waits for `held`
    struct sigaction before;
};

constexpr int side = 256;
// `lower` covers most of the whole frame, `upper` most of its first half.
constexpr std::uint32_t upper = 0x6432c8;
constexpr std::uint32_t lower = 0x28b450;

std::vector<std::uint32_t> picture() {
    std::vector<std::uint32_t> pixels(side * side, lower);
    std::fill_n(pixels.begin(), side * side * 2 / 5, upper);
    return pixels;
}

// Access to the second half of the frame buffer can be blocked.
class FirstFrameTest : public ManagerTest {
protected:
    FirstFrameTest() {
        fake::reset(side, side);
        EXPECT_EQ(setDevices({{"-", 1, {{1, 200, 200}}}}), 1);
        mirrorManager.setScreenSamplePixels();
        own = std::exchange(mirrorManager.frameBuffer, memory.bytes());
    }
    ~FirstFrameTest() override {
        if (stream.joinable())
            stream.join();
        writeFlag(mirrorManager.running, false);
        mirrorManager.frameBuffer = own;
    }

    // Copies the first frame up to its middle.
    void deliverHalf() {
        memory.holdWriters();
        stream = std::thread([this] { deliver(); });
        memory.waitForBlockedThread();
    }

    void deliverTheRest() {
        memory.release();
        if (stream.joinable())
            stream.join();
    }

    void deliver() const { fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &screen); }

    const std::vector<std::uint32_t> screen = picture();
    HeldMemory memory{side * side * 4};
    unsigned char *own = nullptr;
    std::thread stream;
};

std::string paletteText() {
    char buffer[512 + 1] = {};
    EXPECT_EQ(mirrorManager.getPalette(buffer), 0);
    return buffer;
}

std::string dominantText() {
    const RGB dominant = mirrorManager.getDominantScreenColour();
    return std::to_string(dominant.r) + " " + std::to_string(dominant.g) + " " +
           std::to_string(dominant.b);
}

class FirstFrameReading : public FirstFrameTest,
                          public testing::WithParamInterface<std::string (*)()> {
protected:
    std::string whole() {
        deliver();
        return GetParam()();
    }
};

TEST_P(FirstFrameReading, WaitsForTheRest) {
    mirrorManager.running = true;
    deliverHalf();
    std::string text;
    {
        test::ScriptedSystem system;
        system.atSleep = [this] { deliverTheRest(); };
        text = GetParam()();
    }
    deliverTheRest(); // if the reader has not waited
    EXPECT_EQ(text, whole());
}

TEST_P(FirstFrameReading, BeginsAgainWhenItCameMeanwhile) {
    mirrorManager.running = true;
    memory.holdReaders();
    stream = std::thread([this] {
        memory.waitForBlockedThread();
        memory.open();
        deliver();
        memory.release();
    });
    const std::string text = GetParam()();
    stream.join();
    EXPECT_EQ(text, whole());
}

// The thread that ends the run may be the one that blocks the stream's queue.
TEST_P(FirstFrameReading, IsNotWaitedForInARunThatIsStopped) {
    mirrorManager.running = false;
    deliverHalf();
    {
        test::ScriptedSystem system;
        GetParam()();
        EXPECT_TRUE(system.sleeps.empty());
    }
    deliverTheRest();
}

INSTANTIATE_TEST_SUITE_P(Of, FirstFrameReading, testing::Values(paletteText, dominantText),
                         [](const auto &info) {
                             return info.index == 0 ? "ThePalette" : "TheDominantColour";
                         });

TEST_F(FirstFrameTest, AFrameOfMatchModeWaitsForTheRest) {
    UdpSocket socket;
    test::LightReceiver light("127.0.57.2", 0);
    socket.setRemote("127.0.57.2", light.port());
    mirrorManager.running = true;
    deliverHalf();
    {
        test::ScriptedSystem system;
        system.atSleep = [&] {
            deliverTheRest();
            writeFlag(mirrorManager.running, system.sleeps.size() < 2);
        };
        mirrorManager.mirrorModeMatch(1, &socket);
    }
    EXPECT_EQ(light.next(), (test::Datagram{1, 1, 1, 0x28, 0xb4, 0x50, 0, 1}));
}

} // namespace
