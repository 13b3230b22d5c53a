// Repeated loading, running and unloading leaks nothing.
#include "tests/macho/library/libraryOverFakes.h"
#include "tests/platform/processUsage.h"
#include "tests/support/lightReceiver.h"

#include <malloc.h>

namespace macho {

namespace {

std::size_t mappingsOfTheLibrary() {
    return test::mappings("libscreenMirrorMac");
}

class Growth : public LibraryOverFakes {
protected:
    void runOnce() {
        load();
        ASSERT_EQ(configure(document()), 1);
        ASSERT_EQ(start(), 1);
        const auto screen = plainScreen(0x102030);
        fake::deliver(kCGDisplayStreamFrameStatusFrameComplete, &screen);
        ASSERT_TRUE(light.next());
        EXPECT_NE(mappingsOfTheLibrary(), 0u);
        unload(); // during the run
        EXPECT_EQ(mappingsOfTheLibrary(), 0u);
        EXPECT_EQ(fake::frameworks().objects.problems(), std::vector<std::string>());
        fake::frameworks().forget();
        light.drain();
    }

    test::LightReceiver light{"127.0.61.1", 60221};
};

TEST_F(Growth, TwoHundredRounds) {
    unload();
    for (int i = 0; i < 5; ++i) // until the C library's tables have their final size
        ASSERT_NO_FATAL_FAILURE(runOnce());
    const std::size_t descriptors = test::openDescriptors();
    ASSERT_TRUE(test::threadsBecome(1));
    const std::size_t bytes = mallinfo2().uordblks;
    for (int round = 0; round < 200; ++round)
        ASSERT_NO_FATAL_FAILURE(runOnce());
    EXPECT_EQ(test::openDescriptors(), descriptors);
    EXPECT_TRUE(test::threadsBecome(1));
    // The smallest leak per round is a block of 32 bytes. The C library keeps a table of about 400
    // bytes per thread for the largest number of simultaneous threads so far.
    EXPECT_LT(mallinfo2().uordblks, bytes + 200 * 32 / 2);
}

} // namespace

} // namespace macho
