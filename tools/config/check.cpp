#include "tools/config/tree.h"
#include "tools/lights/json.h"
#include "tools/lights/text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>
#include <stdexcept>
#include <string_view>

namespace config {

using lights::nearestName;
using lights::quote;
using Value = rapidjson::Value;

static std::string jsonText(const Value &value) {
    rapidjson::StringBuffer buffer;
    lights::Json writer(buffer);
    value.Accept(writer);
    return buffer.GetString();
}

// The strings that the rules allow, quoted; empty if they allow any.
static std::vector<std::string> allowedTexts(const Value &rules) {
    std::vector<std::string> texts;
    if (const auto found = rules.FindMember("enum"); found != rules.MemberEnd())
        for (const auto &text : found->value.GetArray())
            texts.emplace_back(text.GetString());
    return texts;
}

static std::string describeExpected(const Value &rules) {
    const std::string type = rules["type"].GetString();
    if (rules.HasMember("pattern"))
        return rules["title"].GetString();
    if (const auto texts = allowedTexts(rules); !texts.empty()) {
        std::string list;
        for (const std::string &text : texts)
            list += (list.empty() ? "one of " : ", ") + quote(text);
        return list;
    }
    if (type == "number" && rules.HasMember("minimum"))
        return lights::format("a number from %g to %g", rules["minimum"].GetDouble(),
                              rules["maximum"].GetDouble());
    if (type != "integer")
        return (type == "object" || type == "array" ? "an " : "a ") + type;
    const auto least = rules["minimum"].GetInt64();
    const auto most = rules["maximum"].GetInt64();
    if (least == INT32_MIN && most == INT32_MAX)
        return "an integer that fits 32 bits";
    return "an integer from " + std::to_string(least) + " to " + std::to_string(most);
}

static std::string describeFound(const Value &value) {
    if (value.IsObject())
        return "an object";
    if (value.IsArray())
        return "an array";
    if (value.IsString())
        return "the string " + quote({value.GetString(), value.GetStringLength()});
    if (value.IsDouble() && !std::isfinite(value.GetDouble()))
        return "a number too large for any type";
    return jsonText(value);
}

// The string's content if it is a number of the requested type, else empty.
static std::string numberInside(const Value &value, bool isInteger) {
    if (!value.IsString() || value.GetStringLength() > 30)
        return {};
    rapidjson::Document number;
    number.Parse(value.GetString());
    if (number.HasParseError() || !(isInteger ? number.IsInt() : number.IsNumber()))
        return {};
    return value.GetString();
}

static std::string fixNumber(double number, const Value &rules) {
    if (rules.HasMember("minimum") &&
        (number < rules["minimum"].GetDouble() || number > rules["maximum"].GetDouble()))
        return lights::format("choose a number from %.10g to %.10g", rules["minimum"].GetDouble(),
                              rules["maximum"].GetDouble());
    if (std::trunc(number) == number)
        return "write " + std::to_string(static_cast<std::int32_t>(number)) +
               ", without fraction and exponent";
    return "round it, to " + std::to_string(std::llround(number));
}

static std::string findFix(const Value &value, const Value &rules) {
    const std::string_view type = rules["type"].GetString();
    if (type == "string") {
        const auto near =
            value.IsString() ? nearestName(value.GetString(), allowedTexts(rules)) : std::nullopt;
        return near ? "write " + quote(*near)
                    : "write text in quotes, such as " + jsonText(rules["default"]);
    }
    if (type == "array" && value.IsObject())
        return "put what is there in brackets, as the array's one element";
    if (type == "array")
        return "write a list in brackets, [] if it is empty";
    if (type == "object") {
        std::string names;
        for (const auto &name : rules["required"].GetArray())
            names += (names.empty() ? "" : ", ") + quote(name.GetString());
        return "write an object in braces, with the members " + names;
    }
    if (const auto number = numberInside(value, type == "integer"); !number.empty())
        return "write " + number + " without quotes";
    if (value.IsNumber())
        return fixNumber(value.GetDouble(), rules);
    return "write a number, such as " + jsonText(rules["default"]);
}

// The error for the object at `pointer`, which lacks the member `name` with these rules; `others`
// are the object's names that are not in the schema.
static Problem explainMissing(const std::string &pointer, const std::string &name,
                              const Value &rules, const std::vector<std::string> &others) {
    // An example of the member, and its purpose.
    std::string fix = "add it, such as " + quote(name) + ": " + jsonText(rules["default"]) + " (" +
                      rules["description"].GetString() + ")";
    if (const auto near = nearestName(name, others))
        fix = "rename " + quote(*near) + " to " + quote(name);
    return {stepInto(pointer, name),
            "expected " + describeExpected(rules) + ", found no member of this name", fix};
}

static const rapidjson::Document &schema() {
    static const rapidjson::Document tree = [] {
        rapidjson::Document parsed;
        parsed.Parse(schemaText);
        if (parsed.HasParseError())
            throw std::logic_error("the schema is not JSON");
        return parsed;
    }();
    return tree;
}

// The rules themselves, after resolving `$ref` if there is one.
static const Value &follow(const Value &rules) {
    const auto reference = rules.FindMember("$ref");
    if (reference == rules.MemberEnd())
        return rules;
    const auto *found = rapidjson::Pointer(reference->value.GetString()).Get(schema());
    if (!found)
        throw std::logic_error("the schema refers to rules that it does not have");
    return *found;
}

static bool isWithin(double number, const Value &rules) {
    return !rules.HasMember("minimum") ||
           (number >= rules["minimum"].GetDouble() && number <= rules["maximum"].GetDouble());
}

// Whether the rules allow this text.
static bool isAllowed(const Value &text, const Value &rules) {
    if (!rules.HasMember("enum") && !rules.HasMember("pattern"))
        return true;
    const rapidjson::SchemaDocument schemaOfText(rules);
    rapidjson::SchemaValidator validator(schemaOfText);
    return text.Accept(validator);
}

// Whether the value has the type and range that the rules require; rules without a type accept any.
static bool isValid(const Value &value, const Value &rules) {
    const auto found = rules.FindMember("type");
    if (found == rules.MemberEnd())
        return true;
    const std::string_view type = found->value.GetString();
    if (type == "object")
        return value.IsObject();
    if (type == "array")
        return value.IsArray();
    if (type == "string")
        return value.IsString() && isAllowed(value, rules);
    if (type == "number")
        return value.IsNumber() && isWithin(value.GetDouble(), rules);
    if (type == "integer")
        return value.IsInt64() && isWithin(value.GetDouble(), rules);
    throw std::logic_error("the schema asks for an unknown type");
}

static bool isRequired(const std::string &name, const Value &rules) {
    const auto names = rules["required"].GetArray();
    return std::any_of(names.begin(), names.end(),
                       [&](const Value &required) { return required.GetString() == name; });
}

static bool isFull(const std::vector<Problem> &problems) {
    return problems.size() >= maxProblems;
}

// Checks a value against its rules in the schema, recursively. Supports only the keywords that the
// schema uses; a test compares the two.
static void check(const Value &value, const Value &rulesOrReference, const std::string &pointer,
                  Reading &reading);

static void checkMembers(const Value &object, const Value &rules, const std::string &pointer,
                         Reading &reading) {
    const std::string reader = pointer.starts_with("/lightbridge") ? "lightbridge" : "the library";
    const auto warn = [&](const std::string &name, const std::string &message,
                          const std::string &fix, std::size_t occurrence) {
        reading.unknownMembers.push_back(
            {stepInto(pointer, name), message, fix, {}, Severity::Warning, occurrence});
    };
    const Value &known = rules["properties"];
    std::map<const Value *, std::size_t> counts; // of members seen, by their rules
    std::vector<std::string> others;
    for (const auto &member : object.GetObject()) {
        const auto found = known.FindMember(member.name);
        if (found == known.MemberEnd()) {
            if (others.size() < maxProblems)
                others.emplace_back(member.name.GetString(), member.name.GetStringLength());
            continue;
        }
        const std::size_t before = counts[&found->value]++;
        const std::string name = found->name.GetString();
        if (before > 0 && !isFull(reading.unknownMembers))
            warn(name, "found " + quote(name) + " once more; " + reader + " takes the first",
                 "keep the one that you mean", before);
    }
    std::vector<std::string> absent;
    for (const auto &property : known.GetObject())
        if (!object.HasMember(property.name))
            absent.emplace_back(property.name.GetString());
    for (const std::string &name : others) {
        if (isFull(reading.unknownMembers))
            break;
        const auto near = nearestName(name, absent);
        warn(name, "found a member that " + reader + " does not read",
             near ? "rename it to " + quote(*near) : "take it away, if it is no remark of yours",
             0);
    }

    for (const auto &property : known.GetObject()) {
        const std::string name = property.name.GetString();
        if (const auto found = object.FindMember(property.name); found != object.MemberEnd())
            check(found->value, property.value, stepInto(pointer, name), reading);
        else if (isRequired(name, rules) && !isFull(reading.problems))
            reading.problems.push_back(
                explainMissing(pointer, name, follow(property.value), others));
    }
}

static void check(const Value &value, const Value &rulesOrReference, const std::string &pointer,
                  Reading &reading) {
    if (isFull(reading.problems))
        return;
    const Value &rules = follow(rulesOrReference);
    if (!isValid(value, rules)) {
        reading.problems.push_back(
            {pointer, "expected " + describeExpected(rules) + ", found " + describeFound(value),
             findFix(value, rules)});
    } else if (rules.HasMember("properties")) {
        checkMembers(value, rules, pointer, reading);
    } else if (rules.HasMember("items")) {
        const Value &items = follow(rules["items"]);
        for (rapidjson::SizeType i = 0; i < value.Size() && !isFull(reading.problems); ++i)
            check(value[i], items, stepInto(pointer, i), reading);
    }
}

void check(Reading &reading) {
    check(reading.tree->root, schema(), "", reading);
    if (isFull(reading.problems))
        reading.problems.push_back({"", "there may be more errors than these"});
}

} // namespace config
