#include "tests/mirror/manager.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace {

class Displays : public ManagerTest {};

TEST_F(Displays, InTheSystemsOrder) {
    fake::platform().displays = {{4294967295u, 2880, 1800}, {2, 1, 2}};
    char buffer[256];
    EXPECT_EQ(mirrorManager.getDisplays(buffer, sizeof buffer), 1);
    EXPECT_STREQ(buffer, R"({"numDisplays":2,"displays":[{"displayID":4294967295,"width":2880,)"
                         R"("height":1800},{"displayID":2,"width":1,"height":2}]})");
    EXPECT_EQ(mirrorManager.displayCount, 2u);
    EXPECT_EQ(fake::platform().imagesAlive, 0);
}

TEST_F(Displays, AtMostTen) {
    fake::platform().displays.clear();
    for (unsigned i = 1; i <= 12; ++i)
        fake::platform().displays.push_back({i, 1, 1});
    char buffer[1024];
    EXPECT_EQ(mirrorManager.getDisplays(buffer, sizeof buffer), 1);
    const std::string text = buffer;
    EXPECT_EQ(text.find("{\"numDisplays\":10,"), 0u);
    EXPECT_NE(text.find("\"displayID\":10,"), std::string::npos);
    EXPECT_EQ(text.find("\"displayID\":11,"), std::string::npos);
}

// When the listing fails, only the count is known, and it is more than is ever listed.
TEST_F(Displays, None) {
    for (const bool refuseListing : {true, false}) {
        fake::platform().displays.assign(refuseListing ? 40 : 0, {1, 1, 1});
        fake::platform().refuseListing = refuseListing;
        char buffer[64];
        EXPECT_EQ(mirrorManager.getDisplays(buffer, sizeof buffer), 1);
        EXPECT_STREQ(buffer, R"({"numDisplays":0,"displays":[]})");
    }
}

TEST_F(Displays, ShortBufferGetsTheBeginningUnterminated) {
    char buffer[20];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(mirrorManager.getDisplays(buffer, 16), 1);
    EXPECT_EQ(std::string(buffer, sizeof buffer), "{\"numDisplays\":1####");
}

TEST_F(Displays, LongBufferIsPaddedWithZeros) {
    std::vector<char> buffer(300, '#');
    EXPECT_EQ(mirrorManager.getDisplays(buffer.data(), 299), 1);
    const std::size_t length = std::strlen(buffer.data());
    for (std::size_t i = length; i < 299; ++i)
        ASSERT_EQ(buffer[i], 0);
    EXPECT_EQ(buffer[299], '#');
}

TEST_F(Displays, NoLengthWritesNothing) {
    char buffer = '#';
    EXPECT_EQ(mirrorManager.getDisplays(&buffer, 0), 1);
    EXPECT_EQ(buffer, '#');
}

// The length becomes an enormous bound, and the padding continues to the end of mapped memory. Some
// C libraries pad before they copy.
TEST_F(Displays, ANegativeLengthPadsFarBeyondTheBuffer) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizers refuse such a length";
#endif
    const auto page = static_cast<std::size_t>(getpagesize());
    void *const memory =
        mmap(nullptr, 3 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    static char *text; // for the handler
    text = static_cast<char *>(memory);
    ASSERT_EQ(mirrorManager.getDisplays(text, static_cast<int>(page)), 1);
    static std::size_t length;
    length = std::strlen(text);
    static char *end;
    end = text + 2 * page;
    ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
    std::memset(text, '#', 2 * page);
    const auto atTheEnd = [](int) {
        const bool padded = std::find(text, end, '\0') == text + length &&
                            std::all_of(text + length, end, [](char c) { return !c; });
        _exit(padded ? 9 : 1);
    };
    EXPECT_EXIT(
        {
            std::signal(SIGSEGV, atTheEnd);
            mirrorManager.getDisplays(text, -1);
        },
        testing::ExitedWithCode(9), "");
    munmap(memory, 3 * page);
}

} // namespace
