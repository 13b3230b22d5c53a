// JSON text, written value by value.
#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>
#include <type_traits>

namespace lights {

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

// Adds a value: an empty optional becomes null, a container an array.
template <typename Writer, typename Value> void put(Writer &json, const Value &value) {
    if constexpr (std::is_same_v<Value, bool>) {
        json.Bool(value);
    } else if constexpr (std::is_floating_point_v<Value>) {
        json.Double(value);
    } else if constexpr (std::is_unsigned_v<Value>) {
        json.Uint64(value);
    } else if constexpr (std::is_integral_v<Value>) {
        json.Int64(value);
    } else if constexpr (std::is_convertible_v<Value, std::string_view>) {
        const std::string_view text = value;
        json.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    } else if constexpr (requires { value.has_value(); }) {
        value ? put(json, *value) : void(json.Null());
    } else {
        json.StartArray();
        for (const auto &element : value)
            put(json, element);
        json.EndArray();
    }
}

// Adds a member of an object.
template <typename Writer, typename Value>
void put(Writer &json, const char *key, const Value &value) {
    json.Key(key);
    put(json, value);
}

} // namespace lights
