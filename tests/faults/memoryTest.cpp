// Refuses each memory request of a call in turn: only that one, or all from there on.
#include "tests/faults/faultRun.h"
#include "tests/faults/refusedMemory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <set>

using test::RefusedMemory;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

struct Answer {
    int result;
    std::string said;
    auto operator<=>(const Answer &) const = default;
};

// The expectations for a call.
struct TestCase {
    std::string name;
    std::function<int()> call;
    int success;
    std::set<Answer> possible; // answers to a refusal; each must occur
    long named = 0;            // allocations that the call may keep for good
    std::function<void()> prepare = [] {};
    bool asksTheServer = false;
};

class Memory : public test::FaultRun {
protected:
    void SetUp() override {
        std::puts(""); // standard output allocates at its first use
        std::fflush(stdout);
    }

    static void refuseInTurn(const TestCase &testCase) {
        refuseInTurn(testCase, false);
        // Without memory, every request to the server ends only at its deadline.
        if (!testCase.asksTheServer || test::fullFaults())
            refuseInTurn(testCase, true);
    }

    void capture() {
        start();
        ASSERT_TRUE(showsPlain(0x00ff00));
        ASSERT_EQ(captureCurrentStreamFrames(), 0);
        ASSERT_EQ(stopMirror(), 1);
    }

    std::string text = document();
    char buffer[4096] = "";

private:
    static void refuseInTurn(const TestCase &testCase, bool forGood) {
        std::set<Answer> seen;
        long most = 0;
        // A reply lost because memory was refused costs a wait until the deadline.
        const int step = testCase.asksTheServer && !test::fullFaults() ? 13 : 1;
        int requests = 0;
        testCase.prepare();
        ASSERT_EQ(testCase.call(), testCase.success);
        for (bool refused = true; refused; requests += step) {
            ASSERT_LT(requests, 2000);
            testCase.prepare();
            CaptureStdout();
            Answer answer;
            const long before = test::piecesOut();
            {
                const RefusedMemory memory(RefusedMemory::Who::ThisThread, requests + 1, forGood);
                answer.result = testCase.call();
                refused = RefusedMemory::happened();
            }
            most = std::max(most, test::piecesOut() - before);
            answer.said = GetCapturedStdout();
            if (refused)
                seen.insert(answer);
            EXPECT_TRUE(!refused || testCase.possible.contains(answer))
                << testCase.name << " answers " << answer.result << " and says \"" << answer.said
                << "\" to refusal " << requests + 1;
            testCase.prepare();
            EXPECT_EQ(testCase.call(), testCase.success)
                << testCase.name << " after refusal " << requests + 1;
        }
        if (step == 1 && !forGood)
            EXPECT_EQ(seen.size(), testCase.possible.size()) << testCase.name;
        EXPECT_LE(most, testCase.named) << testCase.name;
        test::printMeasurement(testCase.name + ": " + std::to_string(requests / step - 1) +
                               " requests refused " + (forGood ? "for good" : "once") +
                               ", at most " + std::to_string(most) + " pieces kept");
    }
};

TEST_F(Memory, OfTheDisplayList) {
    ASSERT_EQ(getDisplays(buffer, sizeof buffer), 1);
    const std::string whole = buffer;
    const auto call = [&] {
        std::memset(buffer, '#', sizeof buffer);
        const int result = getDisplays(buffer, sizeof buffer);
        // The buffer holds nothing, everything, no display, or a display of unknown size.
        const std::string_view all(buffer, sizeof buffer);
        if (result == -1)
            EXPECT_EQ(all.find_first_not_of('#'), std::string_view::npos);
        else if (whole != buffer)
            EXPECT_TRUE(all.starts_with(R"({"numDisplays":0,"displays":[]})") ||
                        all.find(R"("width":0,"height":0)") != std::string_view::npos)
                << buffer;
        return result;
    };
    constexpr long ofTheXLibrary = 2; // leaked when it gives up a connection
    refuseInTurn({"getDisplays",
                  call,
                  1,
                  {{-1, "Error getting displays\n"}, {1, ""}},
                  ofTheXLibrary,
                  [] {},
                  true});
}

TEST_F(Memory, OfAConfiguration) {
    // The stream with its handler, its options with their number, its queue, and the frame buffer.
    constexpr long named = 10;
    refuseInTurn({"setMirrorConfig",
                  [&] { return setMirrorConfig(text.data()); },
                  1,
                  {{0, "Bad config!\n"}, {0, "Screen Recording not allowed!\n"}, {1, ""}},
                  named,
                  [] {},
                  true});
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
}

TEST_F(Memory, OfAStart) {
    ASSERT_EQ(configure(text), 1);
    // The new run allocates memory too; that is not counted here.
    constexpr long whatTheRunHas = 1000;
    refuseInTurn(
        {"startMirror", startMirror, 1, {{-1, "Error starting mirroring\n"}}, whatTheRunHas, [] {
             stopMirror();
         }});
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
}

TEST_F(Memory, OfAStop) {
    ASSERT_EQ(configure(text), 1);
    refuseInTurn({"stopMirror", stopMirror, 1, {}, 0, [] { startMirror(); }});
}

TEST_F(Memory, OfThePalette) {
    start();
    ASSERT_TRUE(showsPlain(0x00ff00));
    const auto call = [&] {
        std::memset(buffer, '#', sizeof buffer);
        const int result = getPalette(buffer);
        if (result == -1)
            EXPECT_EQ(std::string_view(buffer, sizeof buffer).find_first_not_of('#'),
                      std::string_view::npos);
        return result;
    };
    refuseInTurn({"getPalette", call, 0, {{-1, ""}}, 1});
}

TEST_F(Memory, OfACapture) {
    start();
    ASSERT_TRUE(showsPlain(0x00ff00));
    refuseInTurn({"captureCurrentStreamFrames", captureCurrentStreamFrames, 0, {}, 2});
}

TEST_F(Memory, OfACapturesText) {
    capture();
    const int size = getSizeOfStreamFrameJson();
    ASSERT_GT(size, 0);
    refuseInTurn({"getSizeOfStreamFrameJson",
                  getSizeOfStreamFrameJson,
                  size,
                  {{-1, "Error writing stream frame(s) to json"}},
                  2});
    refuseInTurn({"getStreamFrameJson", [&] { return getStreamFrameJson(buffer); }, 0, {}});
}

// Requests on the run's own thread and on the stream's. A refusal may end the run with a message,
// but the host can configure and start another.
TEST_F(Memory, OfTheRun) {
    const std::set<std::string> possible = {"", "Error during runMirror\n",
                                            "Stream start failed!\n"};
    std::set<std::string> seen;
    const int step = test::fullFaults() ? 1 : 9;
    int requests = 0;
    for (bool refused = true; refused; requests += step) {
        ASSERT_LT(requests, 500);
        ASSERT_EQ(configure(text), 1);
        receiver.drain();
        CaptureStdout();
        {
            const RefusedMemory memory(RefusedMemory::Who::OtherThreads, requests + 1, false);
            EXPECT_EQ(startMirror(), 1);
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
            for (int frames = 0; frames < 2 && !RefusedMemory::happened() &&
                                 std::chrono::steady_clock::now() < deadline;)
                frames += receiver.next(std::chrono::milliseconds(10)).has_value();
            EXPECT_EQ(stopMirror(), 1);
            refused = RefusedMemory::happened();
        }
        const std::string said = GetCapturedStdout();
        EXPECT_TRUE(possible.contains(said)) << said << requests + 1;
        seen.insert(said);
    }
    EXPECT_TRUE(seen.contains("Error during runMirror\n"));
    EXPECT_TRUE(seen.contains("Stream start failed!\n"));
    receiver.drain();
    start();
    EXPECT_TRUE(showsPlain(0x00ff00));
    test::printMeasurement("a run: " + std::to_string(requests / step - 1) + " requests refused");
}

} // namespace
