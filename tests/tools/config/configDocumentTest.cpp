#include "tools/config/configDocument.h"
#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/tools/config/goodDocument.h"
#include "tools/config/tree.h"

#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <span>
#include <sys/stat.h>
#include <thread>

namespace {

// "POINTER: MESSAGE" of every problem, one per line. Problems of the whole document have
// "LINE:COLUMN" in place of the pointer.
std::string problemsOf(const config::Reading &reading) {
    std::string lines;
    for (const auto &problem : reading.problems) {
        const auto [line, column] = problem.place;
        if (problem.pointer.empty() && line > 0)
            lines += std::to_string(line) + ":" + std::to_string(column);
        lines += problem.pointer + ": " + problem.message + "\n";
    }
    return lines;
}

// How to fix the only problem.
std::string fixIn(const std::string &text) {
    const auto reading = config::readText(text);
    return reading.problems.size() == 1 ? reading.problems[0].fix : "not one problem";
}

std::string problemsIn(const std::string &text) {
    return problemsOf(config::readText(text));
}

struct Member {
    const char *pointer;
    const char *expected;
};

// Every member that the document has, at each of its levels.
const Member integers[] = {
    {"/displayID", "an integer that fits 32 bits"},
    {"/mode", "an integer that fits 32 bits"},
    {"/devices/0/shapeType", "an integer that fits 32 bits"},
    {"/devices/1/controlVersion", "an integer that fits 32 bits"},
    {"/devices/0/panels/0/panelID", "an integer that fits 32 bits"},
    {"/devices/0/panels/1/centroidX", "an integer that fits 32 bits"},
    {"/devices/0/panels/2/centroidY", "an integer that fits 32 bits"},
};
const Member others[] = {
    {"/devices", "an array"},
    {"/devices/0/panels", "an array"},
    {"/devices/1/scaleFactor", "a number"},
    {"/devices/0/ip", "a string"},
};

std::string line(const Member &member, const std::string &found) {
    return std::string(member.pointer) + ": expected " + member.expected + ", found " + found +
           "\n";
}

} // namespace

TEST(ConfigDocument, ReadsEveryMember) {
    const auto reading = config::readText(test::goodDocument);
    ASSERT_EQ(problemsOf(reading), "");
    EXPECT_EQ(reading.text, test::goodDocument);
    const auto &document = reading.document;
    EXPECT_EQ(document.displayID, 7);
    EXPECT_EQ(document.mode, 3);
    ASSERT_EQ(document.devices.size(), 2u);
    const auto &first = document.devices[0];
    EXPECT_EQ(first.ip, "127.0.40.1");
    EXPECT_EQ(first.controlVersion, 1);
    EXPECT_EQ(first.port(), 60221);
    EXPECT_EQ(first.shapeType, 4);
    EXPECT_EQ(first.scaleFactor, 1.5);
    ASSERT_EQ(first.panels.size(), 3u);
    EXPECT_EQ(first.panels[0].panelID, 101);
    EXPECT_EQ(first.panels[0].centroidX, 640);
    EXPECT_EQ(first.panels[0].centroidY, 360);
    EXPECT_EQ(first.panels[1].centroidX, -50);
    EXPECT_EQ(first.panels[2].panelID, 103);
    EXPECT_EQ(first.panels[2].centroidY, 99999);
    const auto &second = document.devices[1];
    EXPECT_EQ(second.ip, "::1");
    EXPECT_EQ(second.port(), 60222);
    EXPECT_EQ(second.shapeType, 5);
    EXPECT_EQ(second.scaleFactor, 2.0);
    EXPECT_TRUE(second.panels.empty());
}

TEST(ConfigDocument, NamesEveryMissingMember) {
    for (const auto &list : {std::span<const Member>(integers), std::span<const Member>(others)})
        for (const auto &member : list)
            EXPECT_EQ(problemsIn(test::withoutValue(member.pointer)),
                      line(member, "no member of this name"));
}

TEST(ConfigDocument, SaysWhatWasFoundInsteadOfAnInteger) {
    const std::pair<const char *, const char *> wrong[] = {
        {"null", "null"},
        {"true", "true"},
        {"false", "false"},
        {"{}", "an object"},
        {"[1]", "an array"},
        {"\"12\"", "the string \"12\""},
        {"2.5", "2.5"},
        {"1.0", "1.0"},
        {"1e2", "100.0"},
        {"2147483648.0", "2147483648.0"},
        {"1e300", "1e300"},
        {"2147483648", "2147483648"},
        {"-2147483649", "-2147483649"},
        {"4294967296", "4294967296"},
        {"18446744073709551615", "18446744073709551615"},
        {"-9223372036854775808", "-9223372036854775808"},
    };
    for (const auto &member : integers)
        for (const auto &[value, found] : wrong)
            EXPECT_EQ(problemsIn(test::withValue(member.pointer, value)), line(member, found));
}

TEST(ConfigDocument, SaysHowToMendValues) {
    const std::pair<const char *, const char *> mended[] = {
        {"1.0", "write 1, without fraction and exponent"},
        {"1e2", "write 100, without fraction and exponent"},
        {"2.7", "round it, to 3"},
        {"\"12\"", "write 12 without quotes"},
        {"\"1.5\"", "write a number, such as 0"},
        {"2147483648", "choose a number from -2147483648 to 2147483647"},
        {"1e300", "choose a number from -2147483648 to 2147483647"},
        {"null", "write a number, such as 0"},
    };
    for (const auto &[value, fix] : mended)
        EXPECT_EQ(fixIn(test::withValue("/mode", value)), fix) << value;
    EXPECT_EQ(fixIn(test::withValue("/devices/0/scaleFactor", "\"1.5\"")),
              "write 1.5 without quotes");
    EXPECT_EQ(fixIn(test::withValue("/devices/0/ip", "5")),
              "write text in quotes, such as \"192.0.2.7\"");
    EXPECT_EQ(fixIn(test::withValue("/devices", "{}")),
              "put what is there in brackets, as the array's one element");
    EXPECT_EQ(fixIn(test::withValue("/devices/1", "3")),
              "write an object in braces, with the members \"panels\", \"scaleFactor\", "
              "\"shapeType\", \"ip\", \"controlVersion\"");
}

TEST(ConfigDocument, TakesIntegersUpToTheirBorders) {
    for (const auto &member : integers)
        for (const char *value : {"2147483647", "-2147483648", "0", "-0"})
            EXPECT_EQ(problemsIn(test::withValue(member.pointer, value)), "") << member.pointer;
    const auto least = config::readText(test::withValue("/displayID", "-2147483648"));
    EXPECT_EQ(least.document.displayID, INT32_MIN);
    const auto greatest = config::readText(test::withValue("/mode", "2147483647"));
    EXPECT_EQ(greatest.document.mode, INT32_MAX);
}

TEST(ConfigDocument, SaysWhatWasFoundInsteadOfOtherTypes) {
    for (const auto &member : others) {
        EXPECT_EQ(problemsIn(test::withValue(member.pointer, "null")), line(member, "null"));
        EXPECT_EQ(problemsIn(test::withValue(member.pointer, "{}")), line(member, "an object"));
    }
    EXPECT_EQ(problemsIn(test::withValue("/devices/0/ip", "5.0")),
              "/devices/0/ip: expected a string, found 5.0\n");
    EXPECT_EQ(problemsIn(test::withValue("/devices/0/scaleFactor", "\"1.5\"")),
              "/devices/0/scaleFactor: expected a number, found the string \"1.5\"\n");
    EXPECT_EQ(problemsIn(test::withValue("/devices/1", "[]")),
              "/devices/1: expected an object, found an array\n");
    EXPECT_EQ(problemsIn(test::withValue("/devices/0/panels/2", "3")),
              "/devices/0/panels/2: expected an object, found 3\n");
}

TEST(ConfigDocument, TakesAnyNumberAsScaleFactor) {
    for (const char *value : {"3", "-1", "0.0", "1e3", "4294967295", "-9223372036854775808",
                              "18446744073709551615", "1e-400"})
        EXPECT_EQ(problemsIn(test::withValue("/devices/0/scaleFactor", value)), "") << value;
}

TEST(ConfigDocument, FindsAllProblemsInDocumentOrder) {
    EXPECT_EQ(problemsIn(R"({"mode": 1.5, "devices": [
        {"panels": [{"panelID": "x", "centroidY": 1}, 4], "scaleFactor": 1, "ip": 1,
         "controlVersion": 2},
        7]})"),
              "/displayID: expected an integer that fits 32 bits, found no member of this name\n"
              "/mode: expected an integer that fits 32 bits, found 1.5\n"
              "/devices/0/panels/0/panelID: expected an integer that fits 32 bits, "
              "found the string \"x\"\n"
              "/devices/0/panels/0/centroidX: expected an integer that fits 32 bits, "
              "found no member of this name\n"
              "/devices/0/panels/1: expected an object, found 4\n"
              "/devices/0/shapeType: expected an integer that fits 32 bits, "
              "found no member of this name\n"
              "/devices/0/ip: expected a string, found 1\n"
              "/devices/1: expected an object, found 7\n");
}

TEST(ConfigDocument, PointsToNamesThatWereMeant) {
    EXPECT_EQ(problemsIn(R"({"displayId": 1, "mode": 0, "devices": []})"),
              "/displayID: expected an integer that fits 32 bits, found no member of this name\n");
    EXPECT_EQ(fixIn(R"({"displayId": 1, "mode": 0, "devices": []})"),
              "rename \"displayId\" to \"displayID\"");
    EXPECT_EQ(fixIn(R"({"displayID": 1, "mod": 0, "devices": []})"), "rename \"mod\" to \"mode\"");
    EXPECT_EQ(fixIn(R"({"displayID": 1, "moed": 0, "devices": []})"),
              "rename \"moed\" to \"mode\"");
    EXPECT_EQ(fixIn(R"({"displayID": 1, "made of": 0, "devices": []})"),
              "add it, such as \"mode\": 0 (0 match, 1 melt, 2 fade, 3 palette)");
}

TEST(ConfigDocument, RefusesRootsThatAreNoObject) {
    EXPECT_EQ(problemsIn("[]"), "1:1: expected an object, found an array\n");
    EXPECT_EQ(problemsIn("3"), "1:1: expected an object, found 3\n");
    EXPECT_EQ(problemsIn(" null "), "1:2: expected an object, found null\n");
}

TEST(ConfigDocument, IgnoresMembersThatItDoesNotKnow) {
    EXPECT_EQ(problemsIn(test::withValue("/comment", R"({"displayID": "x", "deep": [[[]]]})")), "");
    EXPECT_EQ(problemsIn(test::withValue("/devices/0/panels/0/name", "null")), "");
}

TEST(ConfigDocument, AcceptsNoDevicesAtAll) {
    const auto reading = config::readText(R"({"displayID": 1, "mode": 0, "devices": []})");
    EXPECT_EQ(problemsOf(reading), "");
    EXPECT_TRUE(reading.document.devices.empty());
}

TEST(ConfigDocument, TakesTheFirstOfMembersOfOneName) {
    const auto first =
        config::readText(R"({"displayID": 1, "displayID": "x", "mode": 0, "devices": []})");
    EXPECT_EQ(problemsOf(first), "");
    EXPECT_EQ(first.document.displayID, 1);
    EXPECT_EQ(problemsIn(R"({"displayID": "x", "displayID": 1, "mode": 0, "devices": []})"),
              "/displayID: expected an integer that fits 32 bits, found the string \"x\"\n");
}

TEST(ConfigDocument, EndsAddressesAtAZeroCharacter) {
    const auto reading =
        config::readText(test::withValue("/devices/0/ip", R"("127.0.0.1\u0000junk")"));
    ASSERT_EQ(problemsOf(reading), "");
    EXPECT_EQ(reading.document.devices[0].ip, "127.0.0.1");
}

TEST(ConfigDocument, LeavesAddressesToOthers) {
    EXPECT_EQ(problemsIn(test::withValue("/devices/0/ip", "\"no address\"")), "");
    EXPECT_EQ(problemsIn(test::withValue("/devices/0/ip", "\"\"")), "");
}

TEST(ConfigDocument, CutsLongStringsBetweenCharacters) {
    const std::string letters(59, 'a');
    EXPECT_EQ(problemsIn(test::withValue("/mode", "\"" + letters + "\xC3\xA9\xC3\xA9\"")),
              "/mode: expected an integer that fits 32 bits, found the string \"" + letters +
                  "\" and more\n");
}

TEST(ConfigDocument, PlacesWhatCannotBeParsed) {
    EXPECT_EQ(problemsIn(""), "1:1: The document is empty.\n");
    EXPECT_EQ(problemsIn(" \n\n "), "3:2: The document is empty.\n");
    EXPECT_EQ(problemsIn("{"), "1:2: Missing a name for object member.\n");
    EXPECT_EQ(problemsIn("{\n  \"mode\" 3\n}"),
              "2:10: Missing a colon after a name of object member.\n");
    EXPECT_EQ(problemsIn("{} {}"),
              "1:4: The document root must not be followed by other values.\n");
    EXPECT_EQ(problemsIn("{\"a\": 1,}"), "1:9: Missing a name for object member.\n");
    EXPECT_EQ(problemsIn("// no\n{}"), "1:1: found a comment; JSON has no comments\n");
    EXPECT_EQ(problemsIn("{\"a\": /1}"), "1:7: Invalid value.\n");
}

TEST(ConfigDocument, CountsColumnsInCharacters) {
    EXPECT_EQ(problemsIn("{\"\xC3\xA9\xC3\xA9\" 3}"),
              "1:7: Missing a colon after a name of object member.\n");
}

TEST(ConfigDocument, ExplainsByteOrderMarks) {
    EXPECT_EQ(problemsIn(std::string("\xEF\xBB\xBF") + test::goodDocument),
              "1:1: Invalid value.\n");
    EXPECT_EQ(fixIn(std::string("\xEF\xBB\xBF") + test::goodDocument),
              "the text begins with a byte order mark; save it without one");
}

TEST(ConfigDocument, RefusesZeroBytes) {
    const std::string text = std::string(test::goodDocument) + '\0' + "more";
    EXPECT_EQ(problemsIn(text), "24:2: expected JSON text in UTF-8, "
                                "found a zero byte, which would end it\n");
}

TEST(ConfigDocument, RefusesAbsurdNesting) {
    for (const char *opening : {"[", "{\"a\":"}) {
        std::string bomb;
        for (int i = 0; i < 2000000; ++i)
            bomb += opening;
        const auto reading = config::readText(bomb);
        ASSERT_EQ(reading.problems.size(), 1u);
        EXPECT_EQ(reading.problems[0].pointer, "");
        EXPECT_TRUE(test::contains(reading.problems[0].message,
                                   "expected nesting no deeper than 256 levels"));
    }
    // Even in a member that is not read.
    const auto nested = [](int depth) {
        return test::withValue("/comment", std::string(depth, '[') + std::string(depth, ']'));
    };
    EXPECT_EQ(problemsIn(nested(255)), "");
    EXPECT_EQ(config::readText(nested(256)).problems.size(), 1u);
    // Brackets in strings do not count.
    EXPECT_EQ(problemsIn(test::withValue("/comment", '"' + std::string(1000, '[') + "\\\"[\"")),
              "");
}

TEST(ConfigDocument, RefusesMoreValuesThanMemoryHolds) {
    std::string flood = "[1";
    for (std::size_t i = 0; i < config::maxValues; ++i)
        flood += ",1";
    EXPECT_EQ(problemsIn(flood + "]"),
              "1:" + std::to_string(2 * config::maxValues) + ": expected at most " +
                  std::to_string(config::maxValues) + " values, found one more\n");
}

TEST(ConfigDocument, IsWrittenAsItWasRead) {
    const auto first =
        config::readText(test::withValue("/devices/0/ip", R"("a \"lamp\"")")).document;
    const std::string text = config::documentText(first);
    const auto reading = config::readText(text);
    EXPECT_EQ(problemsOf(reading), "");
    EXPECT_EQ(config::documentText(reading.document), text);
    EXPECT_EQ(reading.document.devices[0].ip, "a \"lamp\"");
    EXPECT_EQ(reading.document.devices[0].scaleFactor, 1.5);
    EXPECT_TRUE(test::contains(
        text, "\n        {\"panelID\": 102, \"centroidX\": -50, \"centroidY\": 361},\n"));
    EXPECT_TRUE(test::contains(text, "\"panels\": []"));
    // The parser can produce an infinite number. JSON has none, so the largest number is written.
    const auto large = config::readText(test::withValue("/devices/0/scaleFactor", "1.7e308"));
    config::Document infinite = large.document;
    infinite.devices[0].scaleFactor = std::numeric_limits<double>::infinity();
    EXPECT_EQ(problemsOf(config::readText(config::documentText(infinite))), "");
}

TEST(ConfigDocument, EndsTheListOfEndlessProblems) {
    std::string text = R"({"displayID": 1, "mode": 0, "devices": [0)";
    for (int i = 0; i < 200000; ++i)
        text += ",0";
    const auto reading = config::readText(text + "]}");
    ASSERT_EQ(reading.problems.size(), config::maxProblems + 1);
    EXPECT_EQ(reading.problems[999].pointer, "/devices/999");
    EXPECT_EQ(reading.problems[1000].message, "there may be more errors than these");
}

TEST(ConfigFile, IsReadWhole) {
    // Longer than one read.
    const std::string text = test::goodDocument + std::string(100000, ' ');
    const test::Folder folder;
    std::string reason;
    EXPECT_EQ(config::readTextFile(folder.write("a.json", text), reason), text);
}

TEST(ConfigFile, SaysWhyItCannotBeRead) {
    std::string reason;
    EXPECT_FALSE(config::readTextFile("/no/such/file", reason));
    EXPECT_EQ(reason, "No such file or directory");
    EXPECT_FALSE(config::readTextFile("/tmp", reason));
    EXPECT_EQ(reason, "Is a directory");
}

TEST(ConfigFile, RefusesEndlessFiles) {
    std::string reason;
    EXPECT_FALSE(config::readTextFile("/dev/zero", reason));
    EXPECT_EQ(reason, "larger than 64 MiB");
}

TEST(ConfigFile, DoesNotWaitForEverOnAPipe) {
    const test::Folder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string reason;
    EXPECT_FALSE(config::readTextFile(pipe, reason, std::chrono::milliseconds(50)));
    EXPECT_EQ(reason, "no data arrived for 0 seconds");
    std::thread writer([&] { std::ofstream(pipe) << "slow, " << std::flush << "but there"; });
    EXPECT_EQ(config::readTextFile(pipe, reason), "slow, but there");
    writer.join();
}

TEST(ConfigFile, DescribesProblemsForPrinting) {
    EXPECT_EQ(config::describe("a.json", {"/mode", "bad"}), "a.json: /mode: bad");
    EXPECT_EQ(config::describe("a.json", {"/mode", "bad", "", {3, 7}}),
              "a.json: line 3, column 7: /mode: bad");
    EXPECT_EQ(config::describe("a.json", {"/\n\x1b", "bad"}), "a.json: \"/\\n\\u001B\": bad");
    EXPECT_EQ(config::describe("a.json", {"", "bad"}), "a.json: bad");
}
