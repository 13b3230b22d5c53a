#include "tools/config/remedy.h"

#include "tools/config/nearName.h"
#include "tools/config/pointer.h"
#include "tools/config/quote.h"
#include "tools/config/schema.h"

#include <cmath>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>

namespace config {

static std::string quote(const rapidjson::Value &text) {
    return quote(text.GetString(), text.GetStringLength());
}

static std::string jsonText(const rapidjson::Value &value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return buffer.GetString();
}

static std::string describeFound(const rapidjson::Value &value) {
    switch (value.GetType()) {
    case rapidjson::kNullType:
        return "null";
    case rapidjson::kFalseType:
        return "false";
    case rapidjson::kTrueType:
        return "true";
    case rapidjson::kObjectType:
        return "an object";
    case rapidjson::kArrayType:
        return "an array";
    case rapidjson::kStringType:
        return "the string " + quote(value);
    case rapidjson::kNumberType:
        break;
    }
    if (value.IsDouble() && !std::isfinite(value.GetDouble()))
        return "a number too large for any type";
    return jsonText(value);
}

// The member as it could stand in a document, and what it is for.
static std::string example(const std::string &name, const rapidjson::Value &rules) {
    return quote(name.data(), name.size()) + ": " + jsonText(rules["default"]) + " (" +
           rules["description"].GetString() + ")";
}

// The string's content, if that is the number that is asked for.
static std::string numberInside(const rapidjson::Value &value, bool integer) {
    if (!value.IsString() || value.GetStringLength() > 30)
        return {};
    rapidjson::Document number;
    number.Parse(value.GetString());
    if (number.HasParseError() || !(integer ? number.IsInt() : number.IsNumber()))
        return {};
    return value.GetString();
}

static std::string mendInteger(const rapidjson::Value &value) {
    if (const auto number = numberInside(value, true); !number.empty())
        return "write " + number + " without quotes";
    if (!value.IsNumber())
        return {};
    const double number = value.GetDouble();
    if (number < INT32_MIN || number > INT32_MAX)
        return "choose a number from -2147483648 to 2147483647";
    if (std::trunc(number) == number)
        return "write " + std::to_string(static_cast<std::int32_t>(number)) +
               ", without fraction and exponent";
    return "round it, to " + std::to_string(std::llround(number));
}

static std::string mendOther(const rapidjson::Value &value, std::string_view type,
                             const rapidjson::Value &rules) {
    if (type == "number")
        if (const auto number = numberInside(value, false); !number.empty())
            return "write " + number + " without quotes";
    if (type == "string")
        return "write text in quotes, such as " + jsonText(rules["default"]);
    if (type == "array" && value.IsObject())
        return "put what is there in brackets, as the array's one element";
    if (type == "array")
        return "write a list in brackets, [] if it is empty";
    if (type != "object")
        return {};
    std::string names;
    for (const auto &name : rules["required"].GetArray())
        names += (names.empty() ? "" : ", ") + quote(name);
    return "write an object in braces, with the members " + names;
}

Problem missing(const rapidjson::Value &object, const std::string &pointer, const std::string &name,
                const rapidjson::Value &rules) {
    Problem problem;
    problem.pointer = stepInto(pointer, name);
    const auto &member = rules["properties"][name.c_str()];
    problem.message = "expected " + expectationOf(member) + ", found no member of this name";
    std::vector<std::string> others;
    constexpr std::size_t mostOthers = 100;
    for (const auto &other : object.GetObject())
        if (others.size() < mostOthers && !rules["properties"].HasMember(other.name))
            others.emplace_back(other.name.GetString(), other.name.GetStringLength());
    if (const auto near = nearestName(name, others))
        problem.remedy = "rename " + quote(near->data(), near->size()) + " to " +
                         quote(name.data(), name.size());
    else
        problem.remedy = "add it, such as " + example(name, member);
    return problem;
}

Problem mistyped(const rapidjson::Value &value, const std::string &pointer,
                 const rapidjson::Value &rules) {
    Problem problem;
    problem.pointer = pointer;
    problem.message = "expected " + expectationOf(rules) + ", found " + describeFound(value);
    const std::string_view type = rules["type"].GetString();
    problem.remedy = type == "integer" ? mendInteger(value) : mendOther(value, type, rules);
    if (problem.remedy.empty())
        problem.remedy = "write a number, such as " + jsonText(rules["default"]);
    return problem;
}

} // namespace config
