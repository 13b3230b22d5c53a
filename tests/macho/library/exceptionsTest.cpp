// Exceptions that are caught in the library, and one that it passes to the caller by contract.
#include "colour/colour.h"
#include "tests/macho/library/libraryOverFakes.h"

#include <stdexcept>

namespace macho {

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class Exceptions : public LibraryOverFakes {};

TEST_F(Exceptions, OfAScreenTooLargeForMemoryIsCaughtInTheLibrary) {
    auto &display = fake::frameworks().script.displays.front();
    display.width = std::size_t{1} << 33;
    display.height = std::size_t{1} << 33;
    CaptureStdout();
    EXPECT_EQ(configure(document()), 0);
    EXPECT_EQ(GetCapturedStdout(), "Bad config!\n");
    // The library still works.
    display.width = 40;
    display.height = 30;
    EXPECT_EQ(configure(document()), 1);
}

TEST_F(Exceptions, OfThePaletteReachesTheCaller) {
    ASSERT_EQ(configure(document()), 1);
    const auto palette =
        find<std::vector<RGB>(void *, int)>("_ZN13MirrorManager20getPaletteFromScreenEi");
    void *manager = image->symbol("mirrorManager");
    EXPECT_EQ(palette(manager, 8).size(), 1u); // all black
    EXPECT_THROW(palette(manager, -1), std::length_error);
}

} // namespace

} // namespace macho
