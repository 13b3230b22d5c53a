// The snapshot of the sent frames: the request, the size and the text.
#include "mirror/sharedFlag.h"
#include "tests/mirror/manager.h"
#include "tests/mirror/scriptedSystem.h"

#include <cstring>
#include <rapidjson/document.h>

namespace {

class FrameExport : public ManagerTest {
protected:
    void devices(const std::vector<std::string> &ips) {
        std::vector<DeviceSetup> setups;
        for (const std::string &ip : ips)
            setups.push_back({ip, 1});
        ASSERT_EQ(setDevices(setups), 1);
    }

    // Fetches into a buffer of `size` bytes, followed by guard bytes that must not change. Returns
    // the `size` bytes.
    static std::string fetch(std::size_t size) {
        std::string buffer(size + 64, '\x7e');
        EXPECT_EQ(mirrorManager.getStreamFrameJson(buffer.data()), 0);
        EXPECT_EQ(buffer.substr(size), std::string(64, '\x7e'));
        return buffer.substr(0, size);
    }

    static std::string text() {
        const int size = mirrorManager.getSizeOfStreamFrameJson();
        EXPECT_GT(size, 0);
        EXPECT_EQ(mirrorManager.streamFrameJsonSize, size);
        return fetch(static_cast<std::size_t>(size));
    }
};

TEST_F(FrameExport, MembersInOrder) {
    devices({"127.0.57.2", "::1"});
    mirrorManager.streamFrames = {"1 3 1 255 0 0 0 5", "0 "};
    EXPECT_EQ(text(), R"({"numDevices":2,"devices":[)"
                      R"({"ip":"127.0.57.2","animData":"1 3 1 255 0 0 0 5"},)"
                      R"({"ip":"::1","animData":"0 "}]})");
}

TEST_F(FrameExport, QuotesAndControlCharactersAreEscaped) {
    devices({R"(a\"b\\c\u0001)"});
    mirrorManager.streamFrames = {"say \"hi\"\n\t\x1f"};
    const std::string written = text();
    EXPECT_EQ(written, R"({"numDevices":1,"devices":[{"ip":"a\"b\\c\u0001",)"
                       R"("animData":"say \"hi\"\n\t\u001F"}]})");
    rapidjson::Document document;
    document.Parse(written.c_str());
    EXPECT_STREQ(document["devices"][0]["ip"].GetString(), "a\"b\\c\x01");
    EXPECT_STREQ(document["devices"][0]["animData"].GetString(), "say \"hi\"\n\t\x1f");
}

TEST_F(FrameExport, StringsEndAtTheirFirstZero) {
    devices({"127.0.57.2"});
    mirrorManager.devices[0].ip = std::string("1.2\0.3", 6);
    mirrorManager.streamFrames = {std::string("12\0 34", 6)};
    EXPECT_EQ(text(), R"({"numDevices":1,"devices":[{"ip":"1.2","animData":"12"}]})");
}

TEST_F(FrameExport, FewerFramesThanDevices) {
    devices({"a", "b", "c"});
    mirrorManager.streamFrames = {"x"};
    EXPECT_EQ(text(), R"({"numDevices":3,"devices":[{"ip":"a","animData":"x"},)"
                      R"({"ip":"b","animData":""},{"ip":"c","animData":""}]})");
}

TEST_F(FrameExport, MoreFramesThanDevices) {
    devices({"a"});
    mirrorManager.streamFrames = {"x", "y", "z"};
    EXPECT_EQ(text(), R"({"numDevices":1,"devices":[{"ip":"a","animData":"x"}]})");
    devices({});
    EXPECT_EQ(text(), R"({"numDevices":0,"devices":[]})");
}

TEST_F(FrameExport, FarLongerThanTheFirstCapacity) {
    devices({"a", "b"});
    const std::string frame(200000, '7');
    mirrorManager.streamFrames = {frame, frame};
    EXPECT_EQ(text(), R"({"numDevices":2,"devices":[{"ip":"a","animData":")" + frame +
                          R"("},{"ip":"b","animData":")" + frame + R"("}]})");
}

TEST_F(FrameExport, NothingCapturedKeepsTheSizeAndPadsTheFetch) {
    devices({"a"});
    mirrorManager.getSizeOfStreamFrameJson();
    EXPECT_EQ(mirrorManager.streamFrameJsonSize, 0);
    EXPECT_EQ(fetch(0), ""); // the size is still 0: nothing is written
    mirrorManager.streamFrames = {"x"};
    const std::size_t size = text().size();
    mirrorManager.streamFrames.clear();
    EXPECT_EQ(mirrorManager.getSizeOfStreamFrameJson(), 0);
    EXPECT_EQ(mirrorManager.streamFrameJsonSize, static_cast<int>(size));
    EXPECT_EQ(fetch(size), std::string(size, '\0'));
    EXPECT_EQ(fetch(size), std::string(size, '\0'));
}

TEST_F(FrameExport, AFetchRepeatsTheLastText) {
    devices({"a"});
    mirrorManager.streamFrames = {"first"};
    const std::string first = text();
    mirrorManager.streamFrames = {"second"}; // no size call since then
    EXPECT_EQ(fetch(first.size()), first);
    EXPECT_EQ(fetch(first.size()), first);
}

// Both texts are built in the same buffer; the bound is that of the last size call.
TEST_F(FrameExport, ThePaletteTakesTheSameBuffer) {
    devices({"a"});
    mirrorManager.streamFrames = {"x"};
    const std::string snapshot = text();
    char palette[512];
    ASSERT_EQ(mirrorManager.getPalette(palette), 0);
    const std::string wanted = R"({"palette":[{"R":0,"G":0,"B":0}]})";
    EXPECT_EQ(std::string(palette), wanted);
    EXPECT_EQ(mirrorManager.streamFrameJsonSize, static_cast<int>(snapshot.size()));
    ASSERT_GT(snapshot.size(), wanted.size());
    EXPECT_EQ(fetch(snapshot.size()), wanted + std::string(snapshot.size() - wanted.size(), '\0'));
    EXPECT_EQ(text(), snapshot);

    mirrorManager.streamFrameJsonSize = 11;
    ASSERT_EQ(mirrorManager.getPalette(palette), 0);
    EXPECT_EQ(fetch(11), wanted.substr(0, 11));
}

class CaptureRequest : public FrameExport {
protected:
    test::ScriptedSystem system;
};

TEST_F(CaptureRequest, GivesUpAtTheHundredAndFirstSleep) {
    mirrorManager.streamFrames = {"old"};
    int sleeps = 0;
    system.atSleep = [&] {
        ++sleeps;
        EXPECT_TRUE(mirrorManager.captureRequested);
        EXPECT_TRUE(mirrorManager.streamFrames.empty());
    };
    EXPECT_EQ(mirrorManager.captureCurrentStreamFrames(), -1);
    EXPECT_EQ(sleeps, 101);
    EXPECT_EQ(system.sleeps,
              std::vector<std::chrono::nanoseconds>(101, std::chrono::milliseconds(10)));
    EXPECT_FALSE(mirrorManager.captureRequested);
    EXPECT_EQ(mirrorManager.getSizeOfStreamFrameJson(), 0);
}

TEST_F(CaptureRequest, LooksAfterEachOfTheFirstHundredSleeps) {
    for (const int served : {1, 2, 57, 99, 100, 101}) {
        int sleeps = 0;
        system.atSleep = [&] {
            if (++sleeps == served) {
                mirrorManager.streamFrames = {"new"};
                writeFlag(mirrorManager.captureRequested, false);
            }
        };
        // A capture served in the last sleep is too late.
        EXPECT_EQ(mirrorManager.captureCurrentStreamFrames(), served == 101 ? -1 : 0);
        EXPECT_EQ(sleeps, served);
        EXPECT_FALSE(mirrorManager.captureRequested);
        EXPECT_EQ(mirrorManager.streamFrames, std::vector<std::string>{"new"});
    }
}

TEST_F(FrameExport, WithoutARunTheRequestTakesAboutASecond) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(mirrorManager.captureCurrentStreamFrames(), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1010));
    EXPECT_FALSE(mirrorManager.captureRequested);
}

} // namespace
