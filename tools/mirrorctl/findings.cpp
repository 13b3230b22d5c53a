#include "tools/mirrorctl/findings.h"

#include "tools/config/pointer.h"

#include <algorithm>
#include <cstdio>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace mirrorctl {

static const char *severityName(config::Severity severity) {
    switch (severity) {
    case config::Severity::error:
        return "error";
    case config::Severity::warning:
        return "warning";
    default:
        return "caution";
    }
}

std::size_t count(const Findings &findings, config::Severity severity) {
    return static_cast<std::size_t>(
        std::count_if(findings.problems.begin(), findings.problems.end(),
                      [&](const auto &problem) { return problem.severity == severity; }));
}

static std::string counted(std::size_t number, const std::string &thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

static void print(const std::string &name, const config::Problem &problem) {
    const bool isCaution = problem.severity == config::Severity::caution;
    printf("%s:%zu:%zu: %s: ", name.c_str(), problem.place.line, problem.place.column,
           severityName(problem.severity));
    if (!problem.pointer.empty())
        printf("%s: ", config::shownPointer(problem.pointer).c_str());
    printf("%s%s\n", problem.message.c_str(), problem.message.ends_with('.') ? "" : ".");
    if (!problem.remedy.empty())
        printf("    %s: %s.\n", isCaution ? "What to do" : "To fix it", problem.remedy.c_str());
}

void print(const std::string &name, const Findings &findings) {
    for (const auto &problem : findings.problems)
        if (problem.severity != config::Severity::caution)
            print(name, problem);
    const std::size_t errors = count(findings, config::Severity::error);
    const std::size_t warnings = count(findings, config::Severity::warning);
    if (errors + warnings == 0)
        printf("%s: fine.\n", name.c_str());
    else
        printf("%s: %s, %s.\n", name.c_str(), counted(errors, "error").c_str(),
               counted(warnings, "warning").c_str());
    if (!findings.remark.empty())
        printf("%s\n", findings.remark.c_str());
    for (const auto &problem : findings.problems)
        if (problem.severity == config::Severity::caution)
            print(name, problem);
}

std::string jsonText(const std::string &name, const Findings &findings) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto text = [&](const char *key, const std::string &value) {
        writer.Key(key);
        writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    };
    const auto number = [&](const char *key, std::size_t value) {
        writer.Key(key);
        writer.Uint64(value);
    };
    writer.StartObject();
    text("file", name);
    writer.Key("valid");
    writer.Bool(count(findings, config::Severity::error) == 0);
    number("errors", count(findings, config::Severity::error));
    number("warnings", count(findings, config::Severity::warning));
    number("cautions", count(findings, config::Severity::caution));
    writer.Key("screenKnown");
    writer.Bool(findings.screenKnown);
    writer.Key("problems");
    writer.StartArray();
    for (const auto &problem : findings.problems) {
        writer.StartObject();
        text("severity", severityName(problem.severity));
        text("pointer", problem.pointer);
        number("line", problem.place.line);
        number("column", problem.place.column);
        text("message", problem.message);
        text("remedy", problem.remedy);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return buffer.GetString();
}

} // namespace mirrorctl
