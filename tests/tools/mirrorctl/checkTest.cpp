#include "tests/support/virtualScreen.h"
#include "tests/tools/mirrorctl/lightsFile.h"
#include "tests/tools/mirrorctl/program.h"

#include <gtest/gtest.h>
#include <random>
#include <rapidjson/document.h>

using test::Ending;
using test::LightsFile;
using test::lightsText;
using test::mirrorctl;

namespace {

bool contains(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

// Without any display.
Ending check(const std::string &text, const std::vector<std::string> &arguments = {}) {
    std::vector<std::string> words = {"check", "-"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return mirrorctl(words, {{"DISPLAY", ""}}, text);
}

} // namespace

TEST(MirrorctlCheck, tellsEverythingAtOnce) {
    const Ending ending = check(R"({
  "displayId": 1,
  "mode": 3,
  "devices": [
    {"ip": "lamp", "controlVersion": "2", "shapeType": 0, "scaleFactor": 1, "panels": [
      {"panelID": 1, "centroidX": 700, "centroidY": 10}]}
  ]
})",
                                {"--screen", "640x480"});
    EXPECT_EQ(ending.status, 65);
    EXPECT_EQ(ending.err, "");
    EXPECT_EQ(
        ending.out,
        "standard input:1:1: error: /displayID: expected an integer that fits 32 bits, found no "
        "member of this name.\n"
        "    To mend it: rename \"displayId\" to \"displayID\".\n"
        "standard input:2:3: warning: /displayId: found a member that the library does not read.\n"
        "    To mend it: rename it to \"displayID\".\n"
        "standard input:5:6: error: /devices/0/ip: expected an IPv4 or IPv6 address in numbers, "
        "such as 192.0.2.7 or 2001:db8::7, found \"lamp\".\n"
        "    To mend it: write the device's address in numbers; names are not looked up.\n"
        "standard input:5:20: error: /devices/0/controlVersion: expected an integer that fits 32 "
        "bits, found the string \"2\".\n"
        "    To mend it: write 2 without quotes.\n"
        "standard input:6:22: warning: /devices/0/panels/0/centroidX: expected a place on the "
        "screen, 0 to 639, found 700; the panel takes its colour from the screen's edge.\n"
        "    To mend it: put the panel's centre on the screen (640 x 480).\n"
        "standard input: 3 errors, 2 warnings, 0 cautions.\n");
}

TEST(MirrorctlCheck, printsForScripts) {
    const LightsFile file(lightsText(5, "127.0.58.60", 7));
    const Ending ending = mirrorctl({"check", file.path(), "--json"}, {{"DISPLAY", ""}});
    EXPECT_EQ(ending.status, 0);
    rapidjson::Document tree;
    tree.Parse(ending.out.c_str());
    ASSERT_FALSE(tree.HasParseError()) << ending.out;
    EXPECT_EQ(tree["file"].GetString(), file.path());
    EXPECT_TRUE(tree["valid"].GetBool());
    EXPECT_EQ(tree["errors"].GetUint(), 0u);
    EXPECT_EQ(tree["warnings"].GetUint(), 1u);
    EXPECT_FALSE(tree["screenKnown"].GetBool());
    ASSERT_EQ(tree["problems"].Size(), 1u);
    const auto &problem = tree["problems"][0];
    EXPECT_STREQ(problem["severity"].GetString(), "warning");
    EXPECT_STREQ(problem["pointer"].GetString(), "/mode");
    EXPECT_EQ(problem["line"].GetUint(), 1u);
    EXPECT_EQ(problem["column"].GetUint(), 18u);
    EXPECT_TRUE(problem["message"].IsString() && problem["remedy"].IsString());
}

TEST(MirrorctlCheck, countsWarningsAsFaultsOnlyWhenTold) {
    const std::string odd = lightsText(5, "127.0.58.60", 4);
    EXPECT_EQ(check(odd, {"--screen", "640x480"}).status, 0);
    EXPECT_EQ(check(odd, {"--screen", "640x480", "--strict"}).status, 65);
    // A caution is no fault.
    const Ending match =
        check(lightsText(5, "127.0.58.60", 0), {"--screen", "640x480", "--strict"});
    EXPECT_EQ(match.status, 0);
    EXPECT_TRUE(contains(match.out, "caution: /mode: match mode")) << match.out;
    const Ending good = check(lightsText(5, "127.0.58.60", 3), {"--screen", "640x480"});
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.out, "standard input: no faults found.\n");
}

TEST(MirrorctlCheck, tellsAddressesThatAreNone) {
    EXPECT_EQ(check(lightsText(5, "a lamp", 3)).status, 68);
    EXPECT_EQ(check(lightsText(5, "a lamp", 3), {"--strict"}).status, 68);
    EXPECT_EQ(mirrorctl({"check", "/no/such.json"}).status, 66);
}

TEST(MirrorctlCheck, comparesWithTheDisplayThatIsThere) {
    const test::VirtualScreen screen(640, 480);
    const auto there = test::onlyDisplay(screen.display());
    const auto look = [&](const std::string &text) {
        return mirrorctl({"check", "-"}, {{"DISPLAY", screen.display()}}, text);
    };
    std::string text = lightsText(there, "127.0.58.60", 3);
    EXPECT_EQ(look(text).out, "standard input: no faults found.\n");
    text.replace(text.find("\"centroidX\": 100"), 16, "\"centroidX\": 640");
    EXPECT_TRUE(contains(look(text).out, "0 to 639, found 640")) << look(text).out;
    const Ending other = look(lightsText(there + 1, "127.0.58.60", 3));
    EXPECT_EQ(other.status, 0);
    EXPECT_TRUE(
        contains(other.out, "warning: /displayID: expected one of the displays there are: " +
                                std::to_string(there) + " (640 x 480)"))
        << other.out;
}

TEST(MirrorctlCheck, saysWhatItCouldNotCompare) {
    const Ending ending = check(lightsText(5, "127.0.58.60", 3));
    EXPECT_EQ(ending.out, "There is no display here to compare the panels' places with; --screen "
                          "names its size.\n"
                          "standard input: no faults found.\n");
}

TEST(MirrorctlCheck, printsNoControlCharacters) {
    const Ending ending =
        check(R"({"\u001b[31m\n": 1, "displayID": "\u001b[0m\u0007", "mode": 0, "devices": [}])");
    EXPECT_EQ(ending.out.find('\x1b'), std::string::npos);
    const Ending parsed =
        check(R"({"\u001b[31m\n": 1, "displayID": "\u001b[0m\u0007", "mode": 0, "devices": []})");
    EXPECT_EQ(parsed.status, 65);
    EXPECT_EQ(parsed.out.find('\x1b'), std::string::npos) << parsed.out;
    EXPECT_EQ(parsed.out.find('\x07'), std::string::npos) << parsed.out;
}

TEST(MirrorctlCheck, tellsWhatIsNoDocumentInWholeSentences) {
    const Ending foreign = check(std::string("\177ELF\0", 5));
    EXPECT_EQ(foreign.status, 65);
    EXPECT_EQ(foreign.out, "standard input:1:5: error: expected JSON text in UTF-8, found a zero "
                           "byte, which would end it.\n"
                           "    To mend it: choose the file that you meant, or save it as UTF-8 "
                           "text.\n"
                           "standard input: 1 error, 0 warnings, 0 cautions.\n");
    EXPECT_TRUE(contains(check(std::string(300, '[')).out,
                         "To mend it: choose the file that you meant; a configuration is five "
                         "levels deep.\n"));
}

TEST(MirrorctlCheck, tellsHowToMendWhateverDoesNotParse) {
    for (const char *text :
         {"", "{}{}", "{\"a\":tru}", "{\"a\":1,}", "{\"a\" 1}", "{\"a\":1 \"b\":2}", "[1 2]",
          "{\"a\":\"\\q\"}", "{\"a\":\"\\u12x4\"}", "{\"a\":\"\\ud800\"}", "{\"a\":\"x",
          "{\"a\":\"\xff\"}", "{\"a\":1.}", "{\"a\":1e}", "{\"a\":1e999}"}) {
        const Ending ending = check(text);
        EXPECT_EQ(ending.status, 65) << text;
        EXPECT_TRUE(contains(ending.out, "    To mend it: ")) << text << ": " << ending.out;
    }
}

TEST(MirrorctlCheck, refusesBombs) {
    EXPECT_TRUE(contains(check(std::string(3000000, '[')).out, "no deeper than 256 levels"));
    std::string objects;
    for (int i = 0; i < 500000; ++i)
        objects += "{\"a\":";
    EXPECT_EQ(check(objects).status, 65);
    EXPECT_EQ(mirrorctl({"check", "/dev/zero"}).status, 66);
    std::string flood = "[";
    for (int i = 0; i < 5000000; ++i)
        flood += "0,";
    EXPECT_TRUE(contains(check(flood).out, "at most 4000000 values"));
}

TEST(MirrorctlCheck, hasAnAnswerToAnyBytes) {
    std::mt19937 random(7);
    const std::string good = lightsText(5, "127.0.58.60", 3);
    for (int i = 0; i < 40; ++i) {
        std::string bytes;
        if (i % 2 == 0)
            for (std::size_t size = random() % 300; size > 0; --size)
                bytes += static_cast<char>(random());
        else
            for (bytes = good; random() % 4 != 0;)
                bytes[random() % bytes.size()] = static_cast<char>(random());
        const Ending ending = check(bytes, {"--screen", "640x480"});
        EXPECT_TRUE(ending.status == 0 || ending.status == 65 || ending.status == 68)
            << ending.status;
        EXPECT_NE(ending.out, "");
        EXPECT_EQ(ending.err, "");
    }
}
