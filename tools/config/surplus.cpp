#include "tools/config/surplus.h"

#include "tools/config/nearName.h"
#include "tools/config/pointer.h"
#include "tools/config/quote.h"
#include "tools/config/schema.h"

#include <map>
#include <string_view>

namespace config {

static std::string shown(std::string_view name) {
    return quote(name.data(), name.size());
}

static Problem unknownMember(const rapidjson::Value &object, const std::string &pointer,
                             std::string_view name, const rapidjson::Value &known) {
    Problem problem;
    problem.severity = Severity::warning;
    problem.pointer = stepInto(pointer, name);
    problem.message = "found a member that the library does not read";
    problem.remedy = "take it away, if it is no remark of yours";
    std::vector<std::string> absent;
    for (const auto &property : known.GetObject())
        if (!object.HasMember(property.name))
            absent.emplace_back(property.name.GetString());
    if (const auto near = nearestName(name, absent))
        problem.remedy = "rename it to " + shown(*near);
    return problem;
}

static Problem repeatedMember(const std::string &pointer, std::string_view name,
                              std::size_t occurrence) {
    Problem problem;
    problem.severity = Severity::warning;
    problem.pointer = stepInto(pointer, name);
    problem.occurrence = occurrence;
    problem.message = "found " + shown(name) + " once more; the library takes the first";
    problem.remedy = "keep the one that you mean";
    return problem;
}

static void collect(const rapidjson::Value &object, const std::string &pointer,
                    const rapidjson::Value &rules, std::vector<Problem> &problems) {
    if (!object.IsObject())
        return;
    const rapidjson::Value &known = rules["properties"];
    std::map<std::string_view, std::size_t> seen; // of the known names
    for (const auto &member : object.GetObject()) {
        if (problems.size() >= mostProblems)
            return;
        const std::string_view name(member.name.GetString(), member.name.GetStringLength());
        if (!known.HasMember(member.name))
            problems.push_back(unknownMember(object, pointer, name, known));
        else if (const std::size_t before = seen[name]++; before > 0)
            problems.push_back(repeatedMember(pointer, name, before));
    }
    for (const auto &property : known.GetObject()) {
        const auto list = object.FindMember(property.name);
        if (!property.value.HasMember("items") || list == object.MemberEnd() ||
            !list->value.IsArray())
            continue;
        const std::string inside = stepInto(pointer, property.name.GetString());
        for (rapidjson::SizeType i = 0; i < list->value.Size(); ++i)
            collect(list->value[i], stepInto(inside, i), follow(property.value["items"]), problems);
    }
}

std::vector<Problem> surplusMembers(const rapidjson::Value &root) {
    std::vector<Problem> problems;
    collect(root, "", schemaTree(), problems);
    return problems;
}

} // namespace config
