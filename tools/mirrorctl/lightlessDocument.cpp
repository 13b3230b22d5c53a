#include "tools/mirrorctl/lightlessDocument.h"

namespace mirrorctl {

std::string documentWithoutLights(std::int32_t displayID) {
    return "{\"displayID\": " + std::to_string(displayID) +
           ", \"mode\": 3, \"devices\": [{\"ip\": \"127.0.0.1\", \"controlVersion\": 2, "
           "\"shapeType\": 0, \"scaleFactor\": 1, \"panels\": []}]}";
}

} // namespace mirrorctl
