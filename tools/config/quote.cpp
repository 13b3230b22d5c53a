#include "tools/config/quote.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace config {

std::string quote(const char *text, std::size_t length) {
    constexpr std::size_t longest = 60;
    const bool cut = length > longest;
    if (cut) {
        length = longest;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            --length;
    }
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(text, static_cast<rapidjson::SizeType>(length));
    return buffer.GetString() + std::string(cut ? " and more" : "");
}

} // namespace config
