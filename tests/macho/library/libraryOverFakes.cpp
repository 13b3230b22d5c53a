#include "tests/macho/library/libraryOverFakes.h"

namespace macho {

LibraryOverFakes::LibraryOverFakes() {
    fake::frameworks().script = {.displays = {{.id = 1, .width = 40, .height = 30}}};
    load();
}

LibraryOverFakes::~LibraryOverFakes() {
    unload();
    EXPECT_EQ(fake::frameworks().objects.problems(), std::vector<std::string>());
    fake::frameworks().forget();
}

std::string LibraryOverFakes::document() {
    return R"({"displayID":1,"mode":0,"devices":[{"ip":"127.0.61.1","controlVersion":1,)"
           R"("shapeType":0,"scaleFactor":0.1,"panels":[{"panelID":7,"centroidX":20,)"
           R"("centroidY":15}]}]})";
}

std::vector<std::uint8_t> LibraryOverFakes::datagramOf(std::uint32_t colour) {
    return {1,
            7,
            1,
            static_cast<std::uint8_t>(colour >> 16),
            static_cast<std::uint8_t>(colour >> 8),
            static_cast<std::uint8_t>(colour),
            0,
            1};
}

std::vector<std::uint32_t> plainScreen(std::uint32_t colour) {
    return std::vector<std::uint32_t>(40 * 30, colour | 0xff000000);
}

} // namespace macho
