#include "tools/config/schema.h"

#include <cstdint>
#include <rapidjson/pointer.h>
#include <stdexcept>
#include <string_view>

namespace config {

extern const char schemaText[];

const char *schemaSource() {
    return schemaText;
}

const rapidjson::Document &schemaTree() {
    static const rapidjson::Document tree = [] {
        rapidjson::Document parsed;
        parsed.Parse(schemaText);
        if (parsed.HasParseError())
            throw std::logic_error("the schema is not JSON");
        return parsed;
    }();
    return tree;
}

const rapidjson::SchemaDocument &documentSchema() {
    static const rapidjson::SchemaDocument schema(schemaTree());
    return schema;
}

const rapidjson::Value &follow(const rapidjson::Value &rules) {
    const auto reference = rules.FindMember("$ref");
    if (reference == rules.MemberEnd())
        return rules;
    const auto *found = rapidjson::Pointer(reference->value.GetString()).Get(schemaTree());
    if (!found)
        throw std::logic_error("the schema refers to rules that it does not have");
    return *found;
}

rapidjson::Value sampleOf(const rapidjson::Value &rules,
                          rapidjson::Document::AllocatorType &allocator) {
    const rapidjson::Value &own = follow(rules);
    const std::string_view type = own["type"].GetString();
    rapidjson::Value sample;
    if (type == "object") {
        sample.SetObject();
        for (const auto &name : own["required"].GetArray())
            sample.AddMember(rapidjson::Value(name, allocator),
                             sampleOf(own["properties"][name], allocator), allocator);
    } else if (type == "array") {
        sample.SetArray();
        sample.PushBack(sampleOf(own["items"], allocator), allocator);
    } else {
        sample.CopyFrom(own["default"], allocator);
    }
    return sample;
}

std::string expectationOf(const rapidjson::Value &rules) {
    const std::string_view type = rules["type"].GetString();
    if (type != "integer")
        return (type == "object" || type == "array" ? "an " : "a ") + std::string(type);
    const auto least = rules["minimum"].GetInt64();
    const auto most = rules["maximum"].GetInt64();
    if (least == INT32_MIN && most == INT32_MAX)
        return "an integer that fits 32 bits";
    return "an integer from " + std::to_string(least) + " to " + std::to_string(most);
}

} // namespace config
