#include "tools/mirrorctl/doctor/doctor.h"

#include <algorithm>
#include <cstdio>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace mirrorctl {

static const char *nameOf(Verdict verdict) {
    static constexpr const char *names[] = {"good", "unsure", "bad"};
    return names[static_cast<int>(verdict)];
}

static std::string sentence(const std::string &text) {
    const bool isClosed = text.ends_with('.') || text.ends_with('?') || text.ends_with('!');
    return isClosed ? text : text + ".";
}

bool Section::isBad() const {
    return std::any_of(checks.begin(), checks.end(),
                       [](const Check &check) { return check.verdict == Verdict::Bad; });
}

ExitStatus statusOf(const std::vector<Section> &sections) {
    for (const Section &section : sections)
        for (const Check &check : section.checks)
            if (check.verdict == Verdict::Bad)
                return check.status;
    return ExitStatus::Done;
}

void print(const std::vector<Section> &sections) {
    std::size_t counts[3] = {};
    for (const Section &section : sections) {
        if (!section.checks.empty())
            std::printf("%s\n", section.name.c_str());
        for (const Check &check : section.checks) {
            ++counts[static_cast<int>(check.verdict)];
            std::printf("  %-6s  %s: %s\n", nameOf(check.verdict), check.subject.c_str(),
                        sentence(check.finding).c_str());
            if (!check.remedy.empty())
                std::printf("          To fix it: %s\n", sentence(check.remedy).c_str());
        }
    }
    std::printf("%zu good, %zu unsure, %zu bad.\n", counts[0], counts[1], counts[2]);
}

std::string jsonText(const std::vector<Section> &sections) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto member = [&](const char *key, const std::string &value) {
        writer.Key(key);
        writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    };
    writer.StartObject();
    writer.Key("healthy");
    writer.Bool(statusOf(sections) == ExitStatus::Done);
    writer.Key("checks");
    writer.StartArray();
    for (const Section &section : sections)
        for (const Check &check : section.checks) {
            writer.StartObject();
            member("ward", section.name);
            member("verdict", nameOf(check.verdict));
            member("subject", check.subject);
            member("words", check.finding);
            member("remedy", check.remedy);
            writer.EndObject();
        }
    writer.EndArray();
    writer.EndObject();
    return buffer.GetString();
}

} // namespace mirrorctl
