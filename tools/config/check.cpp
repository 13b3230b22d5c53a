#include "tools/config/check.h"

#include "tools/config/pointer.h"
#include "tools/config/remedy.h"
#include "tools/config/schema.h"

#include <map>
#include <rapidjson/pointer.h>
#include <rapidjson/stringbuffer.h>
#include <stdexcept>
#include <string_view>

namespace config {

// The validator ends at the first error that it meets, so it is asked again and again. To keep that
// cheap it never sees the document itself: each object is judged alone, as a copy that holds only
// the members that the schema names, with arrays and objects in them emptied, in its place within
// an otherwise good document. What is found is then replaced by a good value, until all is good.

namespace {

using Value = rapidjson::Value;
using Allocator = rapidjson::Document::AllocatorType;

// One kind of object: where it stands in the good document.
struct Level {
    const char *place;
    const Value &rules;
};

class Checker {
public:
    std::vector<Problem> problems;

    // Judges the object and all that it holds; `depth` is its level.
    void judge(const Value &value, const std::string &pointer, std::size_t depth);

private:
    using Found = std::map<std::string, Problem, std::less<>>; // by the member's name, or ""

    Found judgeAlone(const Value &value, const std::string &pointer, const Level &level);
    bool isFull() const { return problems.size() >= mostProblems; }

    const Value &root = schemaTree();
    const Value &device = follow(root["properties"]["devices"]["items"]);
    const Value &panel = follow(device["properties"]["panels"]["items"]);
    const Level levels[3] = {{"", root}, {"/devices/0", device}, {"/devices/0/panels/0", panel}};
    rapidjson::SchemaValidator validator{documentSchema()};
};

} // namespace

static Value emptied(const Value &value, Allocator &allocator) {
    if (value.IsObject() || value.IsArray())
        return Value(value.GetType());
    return Value(value, allocator);
}

// The first of each name that the rules have.
static Value namedMembers(const Value &value, const Value &rules, Allocator &allocator) {
    if (!value.IsObject())
        return emptied(value, allocator);
    Value copy(rapidjson::kObjectType);
    for (const auto &property : rules["properties"].GetObject()) {
        const auto member = value.FindMember(property.name);
        if (member != value.MemberEnd())
            copy.AddMember(Value(property.name, allocator), emptied(member->value, allocator),
                           allocator);
    }
    return copy;
}

Checker::Found Checker::judgeAlone(const Value &value, const std::string &pointer,
                                   const Level &level) {
    char room[4096];
    Allocator allocator(room, sizeof room);
    rapidjson::Document good(&allocator);
    static_cast<Value &>(good) = sampleOf(root, allocator);
    Value &object = *rapidjson::Pointer(level.place).Get(good);
    object = namedMembers(value, level.rules, allocator);

    Found found;
    for (;;) {
        validator.Reset();
        if (good.Accept(validator))
            return found;
        rapidjson::StringBuffer text;
        validator.GetInvalidDocumentPointer().Stringify(text);
        const std::string at = text.GetString();
        const std::string_view keyword = validator.GetInvalidSchemaKeyword();
        if (at == level.place && keyword == "required") {
            for (const auto &name : level.rules["required"].GetArray()) {
                if (object.HasMember(name))
                    continue;
                const auto &rules = level.rules["properties"][name];
                found[name.GetString()] = missing(value, pointer, name.GetString(), level.rules);
                object.AddMember(Value(name, allocator), sampleOf(rules, allocator), allocator);
            }
        } else if (at == level.place) {
            found[""] = mistyped(value, pointer, level.rules);
            return found;
        } else {
            const std::string name = stepsOf(at).back();
            if (stepsOf(at).size() != stepsOf(level.place).size() + 1 || found.contains(name))
                throw std::logic_error("the schema does not take its own samples");
            const auto &rules = level.rules["properties"][name.c_str()];
            found[name] = mistyped(value[name.c_str()], stepInto(pointer, name), rules);
            object[name.c_str()] = sampleOf(rules, allocator);
        }
    }
}

void Checker::judge(const Value &value, const std::string &pointer, std::size_t depth) {
    const Level &level = levels[depth];
    const Found found = judgeAlone(value, pointer, level);
    if (const auto whole = found.find(""); whole != found.end()) {
        problems.push_back(whole->second);
        return;
    }
    for (const auto &property : level.rules["properties"].GetObject()) {
        const std::string name = property.name.GetString();
        if (const auto problem = found.find(name); problem != found.end()) {
            problems.push_back(problem->second);
            continue;
        }
        if (!property.value.HasMember("items"))
            continue;
        const Value &elements = value[name.c_str()];
        const std::string inside = stepInto(pointer, name);
        for (rapidjson::SizeType i = 0; i < elements.Size() && !isFull(); ++i)
            judge(elements[i], stepInto(inside, i), depth + 1);
    }
}

std::vector<Problem> check(const Value &root) {
    // Nearly all documents are good, and that is known at once.
    rapidjson::SchemaValidator whole(documentSchema());
    if (root.Accept(whole))
        return {};
    Checker checker;
    checker.judge(root, "", 0);
    if (checker.problems.size() >= mostProblems) {
        checker.problems.resize(mostProblems);
        checker.problems.push_back({"", "there may be more errors than these", ""});
    }
    return std::move(checker.problems);
}

} // namespace config
