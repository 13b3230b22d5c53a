#include "tests/mirror/manager.h"

#include <cstring>

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

TEST_F(Displays, None) {
    fake::platform().displays.clear();
    char buffer[64];
    EXPECT_EQ(mirrorManager.getDisplays(buffer, sizeof buffer), 1);
    EXPECT_STREQ(buffer, R"({"numDisplays":0,"displays":[]})");
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

} // namespace
