#include "tools/lights/text.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace lights {

std::string quote(std::string_view text) {
    constexpr std::size_t longest = 60;
    std::size_t length = text.size();
    if (length > longest) {
        length = longest;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            --length;
    }
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(length));
    return buffer.GetString() + std::string(length < text.size() ? " and more" : "");
}

std::string counted(std::size_t number, const std::string &thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

std::string nameDevice(std::size_t index, const DeviceEntry &device) {
    return "device " + std::to_string(index) + " at " + quote(device.ip) + ", UDP port " +
           std::to_string(device.port());
}

} // namespace lights
