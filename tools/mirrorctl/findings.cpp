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

void print(const std::string &name, const Findings &findings) {
    for (const auto &problem : findings.problems) {
        printf("%s:%zu:%zu: %s: ", name.c_str(), problem.place.line, problem.place.column,
               severityName(problem.severity));
        if (!problem.pointer.empty())
            printf("%s: ", config::shownPointer(problem.pointer).c_str());
        printf("%s%s\n", problem.message.c_str(), problem.message.ends_with('.') ? "" : ".");
        if (!problem.remedy.empty())
            printf("    To mend it: %s.\n", problem.remedy.c_str());
    }
    if (!findings.remark.empty())
        printf("%s\n", findings.remark.c_str());
    if (findings.problems.empty())
        printf("%s: no faults found.\n", name.c_str());
    else
        printf("%s: %s, %s, %s.\n", name.c_str(),
               counted(count(findings, config::Severity::error), "error").c_str(),
               counted(count(findings, config::Severity::warning), "warning").c_str(),
               counted(count(findings, config::Severity::caution), "caution").c_str());
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
    writer.Bool(findings.remark.empty());
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
