// The library's calls to the frameworks, in order, and the objects that it does not release.
#include "tests/macho/library/libraryOverFakes.h"

namespace macho {

namespace {

using Lines = std::vector<std::string>;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class Calls : public LibraryOverFakes {
protected:
    static Lines calls() { return fake::frameworks().calls(); }
    static Lines alive() { return fake::frameworks().objects.alive(); }

    // The objects that one configuration leaves: the stream is kept, its parts are never released.
    const Lines kept = {"number 1", "dictionary 1", "queue 1", "stream 1"};
};

TEST_F(Calls, LoadingAndUnloadingMakesNone) {
    unload();
    EXPECT_EQ(calls(), Lines());
}

TEST_F(Calls, GetDisplaysMeasuresAnImageOfEachAndReleasesIt) {
    fake::frameworks().script.displays = {{.id = 5, .width = 640, .height = 480},
                                          {.id = 77, .width = 3, .height = 2}};
    char text[200] = {};
    EXPECT_EQ(find<decltype(getDisplays)>("getDisplays")(text, sizeof text), 1);
    EXPECT_STREQ(text, R"({"numDisplays":2,"displays":[{"displayID":5,"width":640,"height":480},)"
                       R"({"displayID":77,"width":3,"height":2}]})");
    const Lines all = calls();
    ASSERT_GE(all.size(), 2u);
    EXPECT_EQ(all[0], "CGGetActiveDisplayList(10, null) = 2");
    EXPECT_EQ(all[1], "CGGetActiveDisplayList(10, list) = 2");
    EXPECT_EQ(std::count(all.begin(), all.end(), "CGImageRelease(image 1)"), 1);
    EXPECT_EQ(std::count(all.begin(), all.end(), "CGImageRelease(image 2)"), 1);
    EXPECT_EQ(alive(), Lines());
}

TEST_F(Calls, ConfigurationMakesAStreamOfTheDisplaysSize) {
    EXPECT_EQ(configure(document()), 1);
    EXPECT_EQ(calls(), (Lines{"CGDisplayCreateImage(1) = image 1", "CGImageGetWidth(image 1)",
                              "CGImageGetHeight(image 1)", "CGImageGetBitsPerPixel(image 1)",
                              "CGImageRelease(image 1)", "CFNumberCreate(0.030000) = number 1",
                              "CFDictionaryCreate(2) = dictionary 1",
                              "dispatch_queue_create(\"queue for dispatch\", serial) = queue 1",
                              "CGDisplayStreamCreateWithDispatchQueue(1, 40 x 30, BGRA, "
                              "{at least 0.030000 s a frame, no cursor}) = stream 1"}));
    EXPECT_EQ(alive(), kept);
}

TEST_F(Calls, ARunStartsTheStreamAndStopsIt) {
    ASSERT_EQ(configure(document()), 1);
    const std::size_t before = calls().size();
    EXPECT_EQ(start(), 1);
    EXPECT_EQ(stop(), 1);
    const Lines all = calls();
    EXPECT_EQ(Lines(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
              (Lines{"CGDisplayStreamStart(stream 1)", "CGDisplayStreamStop(stream 1)"}));
    EXPECT_EQ(alive(), kept);
}

TEST_F(Calls, UnloadStopsTheStreamOfARun) {
    ASSERT_EQ(configure(document()), 1);
    ASSERT_EQ(start(), 1);
    unload();
    EXPECT_EQ(calls().back(), "CGDisplayStreamStop(stream 1)");
}

TEST_F(Calls, ARefusedStreamIsToldAndNothingElseIsLeft) {
    fake::frameworks().script.refuseStreams = true;
    CaptureStdout();
    EXPECT_EQ(configure(document()), 0);
    std::fflush(stdout);
    EXPECT_EQ(GetCapturedStdout(), "Screen Recording not allowed!\n");
    EXPECT_EQ(alive(), (Lines{"number 1", "dictionary 1", "queue 1"}));
}

// A later macOS may lack these functions.
TEST_F(Calls, WithoutDisplayStreamsAHostStartsAndIsTold) {
    for (const char *symbol : {"_CGDisplayStreamCreateWithDispatchQueue", "_CGDisplayStreamStart",
                               "_CGDisplayStreamStop", "_kCGDisplayStreamMinimumFrameTime",
                               "_kCGDisplayStreamShowCursor"}) {
        unload();
        Imports imports = libraryImports();
        imports.add(coreGraphics, symbol, static_cast<void *>(nullptr));
        load(imports);
        CaptureStdout();
        EXPECT_EQ(configure(document()), 0) << symbol;
        EXPECT_EQ(start(), 0) << symbol;
        EXPECT_EQ(stop(), 1) << symbol;
        std::fflush(stdout);
        EXPECT_EQ(GetCapturedStdout(), "This system has no display streams!\nNo devices.\n")
            << symbol;
    }
    EXPECT_EQ(alive(), Lines());
}

TEST_F(Calls, AStreamThatDoesNotStartOrStopIsTold) {
    ASSERT_EQ(configure(document()), 1);
    fake::frameworks().script.startResult = kCGErrorFailure;
    CaptureStdout();
    EXPECT_EQ(start(), 1);
    EXPECT_EQ(stop(), 1);
    fake::frameworks().script.startResult = kCGErrorSuccess;
    fake::frameworks().script.stopResult = kCGErrorInvalidOperation;
    EXPECT_EQ(start(), 1);
    EXPECT_EQ(stop(), 1);
    EXPECT_EQ(GetCapturedStdout(), "Stream start failed!\nStream stop failed!\n");
}

TEST_F(Calls, GrabScreenReleasesTheImageAndItsData) {
    auto &display = fake::frameworks().script.displays.front();
    display.bytes.assign(40 * 30 * 4, 9);
    ASSERT_EQ(configure(document()), 1);
    void *manager = image->symbol("mirrorManager");
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(*static_cast<void **>(image->symbol("_ZN13MirrorManager8instanceE")), manager);
    find<void(void *)>("_ZN13MirrorManager10grabScreenEv")(manager);
    const Lines all = calls();
    const Lines last(all.end() - 6, all.end());
    EXPECT_EQ(last,
              (Lines{"CGDisplayCreateImage(1) = image 2", "CGImageGetDataProvider(image 2)",
                     "CGDataProviderCopyData(provider 1) = data 1", "CFDataGetBytePtr(data 1)",
                     "CFRelease(data 1)", "CGImageRelease(image 2)"}));
    EXPECT_EQ(alive(), kept);
}

} // namespace

} // namespace macho
