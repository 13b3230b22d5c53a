// Compares the checker's verdict with the library's reading on damaged documents.
#include "tests/tools/config/goodDocument.h"
#include "tests/tools/config/libraryReading.h"
#include "tools/config/configDocument.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using Random = std::mt19937;

std::size_t below(Random &random, std::size_t limit) {
    return random() % limit;
}

// Collects all values of a tree, including the root.
void collect(rapidjson::Value &value, std::vector<rapidjson::Value *> &values) {
    values.push_back(&value);
    if (value.IsObject())
        for (auto member = value.MemberBegin(); member < value.MemberEnd(); ++member)
            collect(member->value, values);
    if (value.IsArray())
        for (auto &element : value.GetArray())
            collect(element, values);
}

const char *const spareValues[] = {"null",
                                   "true",
                                   "false",
                                   "{}",
                                   "[]",
                                   "[{}]",
                                   "\"\"",
                                   "\"127.0.0.1\\u0000\"",
                                   "0",
                                   "-0",
                                   "-1",
                                   "1.0",
                                   "2.5",
                                   "1e2",
                                   "1e-400",
                                   "1.8e308",
                                   "2147483647",
                                   "2147483648",
                                   "-2147483648",
                                   "-2147483649",
                                   "4294967295",
                                   "18446744073709551615",
                                   "18446744073709551616",
                                   "-9223372036854775809"};

// Replaces a value, extends an array, or drops, adds, renames or duplicates a member.
void damageTree(rapidjson::Document &tree, Random &random) {
    auto &allocator = tree.GetAllocator();
    std::vector<rapidjson::Value *> values;
    collect(tree, values);
    auto &value = *values[below(random, values.size())];
    rapidjson::Document spare(&allocator);
    spare.Parse(spareValues[below(random, std::size(spareValues))]);
    if (!value.IsObject() || value.ObjectEmpty() || below(random, 4) == 0) {
        if (value.IsArray() && below(random, 2) == 0)
            value.PushBack(static_cast<rapidjson::Value &>(spare), allocator);
        else
            value.CopyFrom(spare, allocator);
        return;
    }
    const auto member = value.MemberBegin() + static_cast<long>(below(random, value.MemberCount()));
    switch (below(random, 4)) {
    case 0:
        value.EraseMember(member);
        break;
    case 1:
        value.AddMember("unlisted", static_cast<rapidjson::Value &>(spare), allocator);
        break;
    case 2:
        member->name.SetString("elsewhere");
        break;
    default: {
        // A duplicate name: the first member counts, whichever it is.
        rapidjson::Value name(member->name, allocator);
        if (below(random, 2) == 0)
            static_cast<rapidjson::Value &>(spare).Swap(member->value);
        value.AddMember(name, static_cast<rapidjson::Value &>(spare), allocator);
    }
    }
}

// Drops, inserts or replaces bytes.
void damageText(std::string &text, Random &random) {
    static const char bytes[] = "{}[]\",:0-.eE+\\ /\xFFtn\x01";
    const auto at = below(random, text.size());
    switch (below(random, 3)) {
    case 0:
        text.erase(at, 1 + below(random, 3));
        break;
    case 1:
        text.insert(at, 1, bytes[below(random, sizeof bytes - 1)]);
        break;
    default:
        text[at] = bytes[below(random, sizeof bytes - 1)];
    }
}

// Counts the verdicts, so that a test can check that both kinds occurred.
struct Tally {
    int accepted = 0;
    int refused = 0;

    void compare(const std::string &text) {
        const auto reading = config::readText(text);
        const bool reads = test::libraryReads(text);
        ASSERT_EQ(reading.problems.empty(), reads)
            << text
            << (reading.problems.empty() ? "" : "\n" + config::describe("", reading.problems[0]));
        ++(reads ? accepted : refused);
    }
};

} // namespace

TEST(ConfigAgreement, OverDamagedTrees) {
    Random random(1);
    Tally tally;
    for (int i = 0; i < 400; ++i) {
        rapidjson::Document tree;
        tree.Parse(test::goodDocument);
        for (std::size_t damage = 1 + below(random, 2); damage > 0; --damage)
            damageTree(tree, random);
        ASSERT_NO_FATAL_FAILURE(tally.compare(test::write(tree)));
    }
    EXPECT_GT(tally.accepted, 50);
    EXPECT_GT(tally.refused, 50);
}

TEST(ConfigAgreement, OverDamagedTexts) {
    Random random(2);
    Tally tally;
    for (int i = 0; i < 300; ++i) {
        std::string text = test::goodDocument;
        for (std::size_t damage = 1 + below(random, 2); damage > 0; --damage)
            damageText(text, random);
        ASSERT_NO_FATAL_FAILURE(tally.compare(text));
    }
    EXPECT_GT(tally.accepted, 30);
    EXPECT_GT(tally.refused, 50);
}

TEST(ConfigAgreement, OverEveryBeginning) {
    const std::string text = test::goodDocument;
    Tally tally;
    for (std::size_t length = 0; length <= text.size(); length += 3)
        ASSERT_NO_FATAL_FAILURE(tally.compare(text.substr(0, length)));
    ASSERT_NO_FATAL_FAILURE(tally.compare(text));
    EXPECT_GE(tally.accepted, 1);
}
