#include "tools/mirrorctl/doctor/diagnosis.h"

#include <cstdio>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace mirrorctl {

static const char *verdictName(Verdict verdict) {
    switch (verdict) {
    case Verdict::good:
        return "good";
    case Verdict::unsure:
        return "unsure";
    default:
        return "bad";
    }
}

static std::string sentence(const std::string &words) {
    const bool isClosed = words.ends_with('.') || words.ends_with('?') || words.ends_with('!');
    return isClosed ? words : words + ".";
}

ExitStatus statusOf(const std::vector<Ward> &wards) {
    for (const auto &ward : wards)
        for (const auto &check : ward.checks)
            if (check.verdict == Verdict::bad)
                return check.status;
    return ExitStatus::done;
}

void print(const std::vector<Ward> &wards) {
    std::size_t counts[3] = {};
    for (const auto &ward : wards) {
        if (ward.checks.empty())
            continue;
        printf("%s\n", ward.name.c_str());
        for (const auto &check : ward.checks) {
            ++counts[static_cast<int>(check.verdict)];
            printf("  %-6s  %s: %s\n", verdictName(check.verdict), check.subject.c_str(),
                   sentence(check.words).c_str());
            if (!check.remedy.empty())
                printf("          To fix it: %s\n", sentence(check.remedy).c_str());
        }
    }
    printf("%zu good, %zu unsure, %zu bad.\n", counts[0], counts[1], counts[2]);
}

std::string jsonText(const std::vector<Ward> &wards) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto text = [&](const char *key, const std::string &value) {
        writer.Key(key);
        writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    };
    writer.StartObject();
    writer.Key("healthy");
    writer.Bool(statusOf(wards) == ExitStatus::done);
    writer.Key("checks");
    writer.StartArray();
    for (const auto &ward : wards)
        for (const auto &check : ward.checks) {
            writer.StartObject();
            text("ward", ward.name);
            text("verdict", verdictName(check.verdict));
            text("subject", check.subject);
            text("words", check.words);
            text("remedy", check.remedy);
            writer.EndObject();
        }
    writer.EndArray();
    writer.EndObject();
    return buffer.GetString();
}

} // namespace mirrorctl
