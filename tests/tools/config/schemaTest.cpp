// The schema file: its rules, and its verdicts when a validator applies it, as editors do.
#include "tests/support/files.h"
#include "tests/tools/config/goodDocument.h"
#include "tests/tools/config/libraryReading.h"
#include "tools/config/tree.h"

#include <cctype>
#include <gtest/gtest.h>
#include <rapidjson/schema.h>
#include <set>

namespace {

const std::string schemaFile = test::fileText(SCHEMA_FILE);

bool schemaTakes(const std::string &text) {
    rapidjson::Document schemaTree;
    schemaTree.Parse(schemaFile.c_str());
    const rapidjson::SchemaDocument schema(schemaTree);
    rapidjson::SchemaValidator validator(schema);
    rapidjson::Document tree;
    tree.Parse(text.c_str());
    return !tree.HasParseError() && tree.Accept(validator);
}

const char *const everyMember[] = {"/displayID",
                                   "/mode",
                                   "/devices",
                                   "/devices/0",
                                   "/devices/0/panels",
                                   "/devices/0/scaleFactor",
                                   "/devices/0/shapeType",
                                   "/devices/1/ip",
                                   "/devices/1/controlVersion",
                                   "/devices/0/panels/1",
                                   "/devices/0/panels/0/panelID",
                                   "/devices/0/panels/1/centroidX",
                                   "/devices/0/panels/2/centroidY"};

const char *const everyKindOfValue[] = {
    "null",       "true",        "\"text\"",   "{}",          "[]",    "[1]", "0",
    "-0",         "-1",          "4",          "1.0",         "2.5",   "1e2", "2147483647",
    "2147483648", "-2147483648", "4294967295", "-2147483649", "1e300", "\"\""};

// The keywords that check.cpp applies, and those that require nothing. Before the schema uses
// another keyword, the checker must support it.
const std::set<std::string> knownKeywords = {
    "$ref",    "$schema", "default", "definitions", "description", "enum",  "items",
    "maximum", "minimum", "pattern", "properties",  "required",    "title", "type"};

void expectRulesThatTheCheckerKnows(const rapidjson::Value &rules, const std::string &place) {
    for (const auto &rule : rules.GetObject())
        EXPECT_TRUE(knownKeywords.contains(rule.name.GetString()))
            << place << ": " << rule.name.GetString();
    const std::string type = rules.HasMember("type") ? rules["type"].GetString() : "";
    EXPECT_EQ(rules.HasMember("minimum"), rules.HasMember("maximum")) << place;
    EXPECT_EQ(rules.HasMember("minimum"),
              type == "integer" || (type == "number" && rules.HasMember("minimum")))
        << place;
    EXPECT_TRUE(type == "string" || !(rules.HasMember("enum") || rules.HasMember("pattern")))
        << place;
    // A message about a mistyped text uses an example, and one about a pattern its title.
    EXPECT_TRUE(type != "string" || rules.HasMember("default")) << place;
    EXPECT_TRUE(!rules.HasMember("pattern") || rules.HasMember("title")) << place;
    EXPECT_EQ(rules.HasMember("properties") && rules.HasMember("required"), type == "object")
        << place;
    EXPECT_EQ(rules.HasMember("items"), type == "array") << place;
    for (const char *parts : {"properties", "definitions"})
        if (rules.HasMember(parts))
            for (const auto &part : rules[parts].GetObject())
                expectRulesThatTheCheckerKnows(part.value, place + "/" + part.name.GetString());
    if (rules.HasMember("items"))
        expectRulesThatTheCheckerKnows(rules["items"], place + "/items");
    if (!rules.HasMember("required"))
        return;
    // The message about a missing member uses these.
    for (const auto &name : rules["required"].GetArray())
        for (const char *part : {"type", "default", "description"})
            EXPECT_TRUE(rules["properties"][name].HasMember(part)) << place << ": " << part;
}

} // namespace

TEST(ConfigSchema, IsTheOneInThePrograms) {
    EXPECT_EQ(schemaFile, config::schemaText);
}

TEST(ConfigSchema, HasOnlyRulesThatTheCheckerKnows) {
    rapidjson::Document tree;
    tree.Parse(schemaFile.c_str());
    expectRulesThatTheCheckerKnows(tree, "");
}

TEST(ConfigSchema, JudgesEveryValueOfEveryMemberAsTheLibraryDoes) {
    int accepted = 0;
    int refused = 0;
    for (const char *member : everyMember)
        for (const char *value : everyKindOfValue) {
            const std::string text = test::withValue(member, value);
            const bool reads = test::libraryReads(text);
            EXPECT_EQ(schemaTakes(text), reads) << member << ": " << value;
            EXPECT_EQ(config::readText(text).problems.empty(), reads) << member << ": " << value;
            ++(reads ? accepted : refused);
        }
    EXPECT_GT(accepted, 50);
    EXPECT_GT(refused, 100);
}

TEST(ConfigSchema, AsksForEveryMemberThatTheLibraryReads) {
    EXPECT_TRUE(schemaTakes(test::goodDocument));
    for (const std::string member : everyMember) {
        if (std::isdigit(static_cast<unsigned char>(member.back())))
            continue; // an array's element
        const std::string text = test::withoutValue(member);
        EXPECT_FALSE(test::libraryReads(text)) << member;
        EXPECT_FALSE(schemaTakes(text)) << member;
    }
}

TEST(ConfigSchema, TakesMembersThatTheLibraryIgnores) {
    EXPECT_TRUE(schemaTakes(test::withValue("/$schema", "\"mirror-config.schema.json\"")));
    EXPECT_TRUE(schemaTakes(test::withValue("/devices/0/name", "{\"panels\": 3}")));
    EXPECT_FALSE(schemaTakes("[]"));
    EXPECT_FALSE(schemaTakes("{}"));
}
