// Makes each allocation of a call fail in turn.
#include "tests/mirror/failingAllocation.h"
#include "tests/mirror/manager.h"

#include <cstring>
#include <functional>
#include <string_view>

namespace {

struct Outcome {
    bool failed; // whether an allocation failed
    int result;
    std::string said;
};

Outcome failing(int nth, const std::function<int()> &call) {
    Outcome outcome{};
    CaptureStdout();
    {
        const test::FailingAllocation failure(nth);
        outcome.result = call();
        outcome.failed = failure.happened();
    }
    outcome.said = GetCapturedStdout();
    return outcome;
}

class AllocationFailure : public ManagerTest {
protected:
    // Makes each allocation of `call` fail in turn and expects the same result every time.
    static void expectEveryFailure(const std::function<int()> &call, int result,
                                   const std::string &said) {
        int failures = 0;
        for (;; ++failures) {
            const Outcome outcome = failing(failures + 1, call);
            if (!outcome.failed)
                break;
            EXPECT_EQ(outcome.result, result) << failures;
            EXPECT_EQ(outcome.said, said) << failures;
        }
        EXPECT_GT(failures, 0);
    }

    void oneDevice() { ASSERT_EQ(setDevices({{"127.0.59.1", 2}}), 1); }
};

TEST_F(AllocationFailure, OfTheDisplayListLeavesTheBufferAsItWas) {
    char buffer[256];
    bool untouched = true;
    const auto call = [&] {
        std::memset(buffer, '#', sizeof buffer);
        const int result = mirrorManager.getDisplays(buffer, sizeof buffer);
        if (result != 1)
            untouched =
                untouched && std::string_view(buffer, sizeof buffer).find_first_not_of('#') ==
                                 std::string_view::npos;
        return result;
    };
    expectEveryFailure(call, -1, "Error getting displays\n");
    EXPECT_TRUE(untouched);
}

// These two messages end without a line break.
TEST_F(AllocationFailure, OfTheStreamFramesText) {
    oneDevice();
    mirrorManager.streamFrames = {"0 "};
    mirrorManager.streamFrameJsonSize = 7;
    mirrorManager.streamFrameJson = {};
    const Outcome outcome = failing(1, [] { return mirrorManager.getSizeOfStreamFrameJson(); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.said, "Error writing stream frame(s) to json");
    EXPECT_EQ(mirrorManager.streamFrameJsonSize, 7);
    expectEveryFailure([] { return mirrorManager.getSizeOfStreamFrameJson(); }, -1,
                       "Error writing stream frame(s) to json");
}

TEST_F(AllocationFailure, OfTheStreamFramesCopyLeavesTheBufferAsItWas) {
    mirrorManager.streamFrameJsonSize = 16;
    mirrorManager.streamFrameJson = {}; // its first use allocates
    char buffer[] = "################";
    const Outcome outcome = failing(1, [&] { return mirrorManager.getStreamFrameJson(buffer); });
    EXPECT_TRUE(outcome.failed);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.said, "Error copying stream frames");
    EXPECT_STREQ(buffer, "################");
}

TEST_F(AllocationFailure, OfThePaletteIsSilent) {
    char buffer[512];
    expectEveryFailure([&] { return mirrorManager.getPalette(buffer); }, -1, "");
}

TEST_F(AllocationFailure, OfTheThreadIsAStartThatFailed) {
    oneDevice();
    const Outcome outcome = failing(1, [] { return mirrorManager.startMirror(); });
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.said, "Error starting mirroring\n");
    EXPECT_FALSE(mirrorManager.mirrorThread.joinable());
    EXPECT_EQ(mirrorManager.startMirror(), 1);
}

TEST_F(AllocationFailure, OfASocketsAddressNamesTheSocket) {
    UdpSocket sockets[3];
    for (const int index : {0, 2}) {
        std::string ip(100, '1'); // too long to be kept without an allocation
        const Outcome outcome = failing(1, [&] {
            mirrorManager.initStreamControlSocket(std::move(ip), 1, sockets, index);
            return 0;
        });
        EXPECT_TRUE(outcome.failed);
        EXPECT_EQ(outcome.said, "Socket init " + std::to_string(index) + " failed\n");
    }
}

// Once the stream exists, everything read so far is kept: the mode, and the devices up to the
// failure.
TEST_F(AllocationFailure, OfAConfigurationKeepsWhatWasReadBeforeIt) {
    std::string both =
        document({{"127.0.59.11", 1, {{1, 2, 3}}}, {"127.0.59.12", 2, {{4, 5, 6}}}}, 3);
    int afterTheFirst = 0;
    for (int nth = 1;; ++nth) {
        mirrorManager.deInitScreen();
        mirrorManager.devices.clear();
        mirrorManager.devices.shrink_to_fit();
        mirrorManager.mode = 0;
        const Outcome outcome =
            failing(nth, [&] { return mirrorManager.setMirrorConfig(both.data()); });
        const std::size_t read = mirrorManager.devices.size();
        if (!outcome.failed)
            break;
        if (outcome.result == 1) { // a stream that could not be made counts as success
            EXPECT_EQ(outcome.said, "CGDisplayStream Initialization failed!\n");
            EXPECT_EQ(read, 2u);
            continue;
        }
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.said, "Bad config!\n");
        ASSERT_LT(read, 2u);
        if (read == 1) {
            ++afterTheFirst;
            EXPECT_EQ(mirrorManager.mode, 3);
            EXPECT_EQ(mirrorManager.devices[0].ip, "127.0.59.11");
            EXPECT_EQ(mirrorManager.devices[0].panels.size(), 1u);
        }
    }
    EXPECT_GT(afterTheFirst, 0);
    EXPECT_EQ(mirrorManager.devices.size(), 2u);
}

} // namespace
