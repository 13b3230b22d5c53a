#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <random>

using test::contains;
using test::lightsText;
using test::mirrorctl;
using test::ProcessResult;

namespace {

const ProcessResult fine{0, "standard input: fine.\n", ""};

// Runs `mirrorctl check` without any display.
ProcessResult check(const std::string &text, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), {"check", "-"});
    return mirrorctl(arguments, {{"DISPLAY", ""}}, text);
}

} // namespace

TEST(MirrorctlCheck, TellsEverythingAtOnce) {
    const ProcessResult result = check(R"({
  "displayId": 1,
  "mode": 3,
  "devices": [
    {"ip": "lamp", "controlVersion": "2", "shapeType": 0, "scaleFactor": 1, "panels": [
      {"panelID": 1, "centroidX": 700, "centroidY": 10}]}
  ]
})",
                                       {"--screen", "640x480"});
    EXPECT_EQ(result.status, 65);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(
        result.out,
        "standard input:1:1: error: /displayID: expected an integer that fits 32 bits, found no "
        "member of this name.\n"
        "    To fix it: rename \"displayId\" to \"displayID\".\n"
        "standard input:2:3: warning: /displayId: found a member that the library does not read.\n"
        "    To fix it: rename it to \"displayID\".\n"
        "standard input:5:6: error: /devices/0/ip: expected an IPv4 or IPv6 address in numbers, "
        "such as 192.0.2.7 or 2001:db8::7, found \"lamp\".\n"
        "    To fix it: write the device's address in numbers; names are not looked up.\n"
        "standard input:5:20: error: /devices/0/controlVersion: expected an integer that fits 32 "
        "bits, found the string \"2\".\n"
        "    To fix it: write 2 without quotes.\n"
        "standard input:6:22: warning: /devices/0/panels/0/centroidX: expected a place on the "
        "screen, 0 to 639, found 700; the panel takes its colour from the screen's edge.\n"
        "    To fix it: put the panel's centre on the screen (640 x 480).\n"
        "standard input: 3 errors, 2 warnings.\n");
}

TEST(MirrorctlCheck, PrintsForScripts) {
    const test::Folder folder;
    const std::string path = folder.write("a.json", lightsText(5, "fe80::58:60", 3));
    const ProcessResult result = mirrorctl({"check", path, "--json"}, {{"DISPLAY", ""}});
    EXPECT_EQ(result.status, 0);
    const auto tree = test::parsed(result.out);
    EXPECT_EQ(tree["file"].GetString(), path);
    EXPECT_TRUE(tree["valid"].GetBool());
    EXPECT_EQ(tree["errors"].GetUint(), 0u);
    EXPECT_EQ(tree["warnings"].GetUint(), 1u);
    EXPECT_FALSE(tree["screenKnown"].GetBool());
    ASSERT_EQ(tree["problems"].Size(), 1u);
    const auto &problem = tree["problems"][0];
    EXPECT_STREQ(problem["severity"].GetString(), "warning");
    EXPECT_STREQ(problem["pointer"].GetString(), "/devices/0/ip");
    EXPECT_EQ(problem["line"].GetUint(), 1u);
    EXPECT_EQ(problem["column"].GetUint(), 42u);
    EXPECT_TRUE(problem["message"].IsString() && problem["remedy"].IsString());
}

TEST(MirrorctlCheck, CountsWarningsAsFaultsOnlyWhenTold) {
    const std::string odd = lightsText(5, "fe80::58:60", 3);
    EXPECT_EQ(check(odd, {"--screen", "640x480"}).status, 0);
    EXPECT_EQ(check(odd, {"--screen", "640x480", "--strict"}).status, 65);
    // A caution does not count as a fault.
    const std::string match = lightsText(5, "127.0.58.60", 0);
    EXPECT_EQ(check(match, {"--screen", "640x480", "--strict"}).status, 0);
    EXPECT_EQ(check(lightsText(5, "127.0.58.60", 3), {"--screen", "640x480"}), fine);
}

TEST(MirrorctlCheck, SaysFineBeforeAnyCaution) {
    const ProcessResult result = check(lightsText(5, "127.0.58.60", 0), {"--screen", "640x480"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.out.starts_with("standard input: fine.\n"
                                       "standard input:1:18: caution: /mode: match mode lets the "
                                       "whole wall flash up to 11.9 times a second"))
        << result.out;
    EXPECT_TRUE(contains(result.out, "\n    What to do: "));
    const ProcessResult faulty = check(lightsText(5, "lamp", 0), {"--screen", "640x480"});
    EXPECT_TRUE(contains(faulty.out, "standard input: 1 error, 0 warnings.\n"
                                     "standard input:1:18: caution: "));
}

// A mode that a run refuses is an error, with the exit status of that run.
TEST(MirrorctlCheck, RefusesModesThatDoNotExist) {
    for (const int mode : {-1, 4}) {
        const std::string report =
            "standard input:1:18: error: /mode: expected 0 (match), 1 (melt), 2 (fade) or 3 "
            "(palette), found " +
            std::to_string(mode) +
            "; a run in any other mode ends at once.\n"
            "    To fix it: choose one of these four.\n"
            "standard input: 1 error, 0 warnings.\n";
        EXPECT_EQ(check(lightsText(5, "127.0.58.60", mode), {"--screen", "640x480"}),
                  (ProcessResult{65, report, ""}));
    }
}

using MirrorctlCheckOnScreen = test::ScreenTest;

TEST_F(MirrorctlCheckOnScreen, LooksForTheDisplay) {
    const auto look = [&](std::uint32_t wanted, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"check", "-"});
        return run(arguments, lightsText(wanted, "127.0.58.60", 3));
    };
    const std::string missing =
        "standard input:1:2: error: /displayID: expected one of the displays there are: " +
        std::to_string(display) + " (640 x 480); found " + std::to_string(display + 1) +
        ".\n"
        "    To fix it: choose one of them; no other is ever taken in its place.\n";
    EXPECT_EQ(look(display, {}), fine);
    EXPECT_EQ(look(display, {"--display"}), fine);
    const ProcessResult other = look(display + 1, {});
    EXPECT_EQ(other.status, 69);
    EXPECT_EQ(other.out, missing + "standard input: 1 error, 0 warnings.\n"
                                   "The panels' places were not checked; --screen names the "
                                   "display's size.\n");
    EXPECT_EQ(look(display + 1, {"--no-display"}).status, 0);
    EXPECT_EQ(look(display + 1, {"--screen", "640x480"}), fine);
    EXPECT_EQ(look(display + 1, {"--screen", "640x480", "--display"}).out,
              missing + "standard input: 1 error, 0 warnings.\n");
}

TEST(MirrorctlCheck, NeedsADisplayOnlyWhenTold) {
    const std::string good = lightsText(5, "127.0.58.60", 3);
    EXPECT_EQ(check(good, {"--no-display"}).status, 0);
    test::expectOutput(check(good, {"--display"}), 69,
                       {"standard input:1:2: error: /displayID: expected a display, but there is "
                        "none at all; found 5.\n"});
    // A display without a picture still counts as present.
    test::expectOutput(
        mirrorctl({"check", "-"}, test::refusing("picture"), lightsText(6, "127.0.58.60", 3)), 0,
        {"fine.\nThe display gives no picture, so its size is not known. The panels' places were "
         "not checked;"});
    // No X server is at this address.
    const ProcessResult absent =
        mirrorctl({"check", "-"}, {{"DISPLAY", "/nonexistent/words:0"}}, good);
    EXPECT_EQ(absent.status, 0);
}

TEST(MirrorctlCheck, EndsWithTheStatusOfARun) {
    const std::string address = lightsText(5, "a lamp", 3);
    EXPECT_EQ(check(address).status, 68);
    EXPECT_EQ(check(address, {"--strict"}).status, 68);
    EXPECT_EQ(check(address, {"--display"}).status, 68);
    EXPECT_EQ(check(lightsText(5, "a lamp", 4), {"--display"}).status, 65);
    EXPECT_EQ(mirrorctl({"check", "/no/such.json"}).status, 66);
}

TEST(MirrorctlCheck, TellsAddressesThatNoLightCanHave) {
    const struct {
        const char *ip;
        const char *words;
        const char *remedy;
    } cases[] = {
        {"0.0.0.0", "which stands for no address", "write the light's own address"},
        {"::", "which stands for no address", "write the light's own address"},
        {"255.255.255.255", "which is the broadcast address", "write the light's own address"},
        {"224.0.0.1", "which is a multicast address", "write the light's own address"},
        {"239.255.255.255", "which is a multicast address", "write the light's own address"},
        {"ff02::1", "which is a multicast address", "write the light's own address"},
        {"192.0.2.7:60221", "expected an address without brackets and port",
         "write \"192.0.2.7\"; the port follows from controlVersion (1: 60221, any other: 60222)"},
        {"[::1]:60222", "expected an address without brackets and port", "write \"::1\"; the port"},
        {"[2001:db8::7]", "expected an address without brackets and port",
         "write \"2001:db8::7\"; the port"},
        {"fe80::1%eth0", "expected an address without a zone", "write the light's IPv4 address"},
        {"lamp:60221", "expected an IPv4 or IPv6 address in numbers", "names are not looked up"},
        {"[lamp]:60221", "expected an IPv4 or IPv6 address in numbers", "names are not looked up"},
        {"[", "expected an IPv4 or IPv6 address in numbers", "names are not looked up"},
        {"[::1]x:1", "expected an IPv4 or IPv6 address in numbers", "names are not looked up"},
    };
    for (const auto &one : cases)
        test::expectOutput(check(lightsText(5, one.ip, 3), {"--screen", "640x480"}), 68,
                           {"error: /devices/0/ip: ", one.words, one.remedy,
                            "found \"" + std::string(one.ip) + "\""});
    for (const char *ip : {"223.255.255.255", "240.0.0.1", "192.168.1.255", "fd00::1", "fe00::1"})
        EXPECT_EQ(check(lightsText(5, ip, 3), {"--screen", "640x480"}), fine) << ip;
    EXPECT_TRUE(contains(check(lightsText(5, "fe80::1", 3)).out,
                         "warning: /devices/0/ip: found the link-local address fe80::1, which does "
                         "not say on which network interface the light is"));
}

TEST(MirrorctlCheck, NamesComments) {
    const std::string good = lightsText(5, "127.0.58.60", 3);
    const auto with = [&](const std::string &before, const std::string &comment) {
        std::string text = good;
        return text.insert(text.find(before), comment);
    };
    for (const std::string &text :
         {"// a comment\n" + good, with("\"displayID", "/* a */ "), with("5", "// a\n"),
          with(", \"mode", " # a\n"), with("{\"panelID", "// a\n"), with("}]}]}", " // a\n"),
          with("]}]}", " // a\n"), good + " // a", with(":", "/**/")}) {
        SCOPED_TRACE(text);
        test::expectOutput(check(text), 65,
                           {"error: found a comment; JSON has no comments.\n"
                            "    To fix it: remove the comments.\n"});
    }
    EXPECT_FALSE(contains(check("{\"a\":/1}").out, "comment"));
}

TEST_F(MirrorctlCheckOnScreen, ComparesWithTheDisplayThatIsThere) {
    std::string text = lights("127.0.58.60", 3);
    text.replace(text.find("\"centroidX\": 100"), 16, "\"centroidX\": 640");
    EXPECT_TRUE(contains(run({"check", "-"}, text).out, "0 to 639, found 640"));
}

TEST(MirrorctlCheck, SaysWhatItCouldNotCompare) {
    const ProcessResult result = check(lightsText(5, "127.0.58.60", 3));
    EXPECT_EQ(result.out, "standard input: fine.\n"
                          "There is no display here to look at. The panels' places were not "
                          "checked; --screen names the display's size.\n");
}

TEST(MirrorctlCheck, AServerWithoutADisplayIsLikeNoServer) {
    test::VirtualScreen screen(640, 480);
    screen.run({"xrandr", "--fb", "640x480", "--output", screen.output(), "--off"});
    const std::string text = lightsText(5, "127.0.58.60", 3);
    const test::Variables variables = {{"DISPLAY", screen.display()}};
    EXPECT_EQ(mirrorctl({"check", "-"}, variables, text), check(text));
    test::expectOutput(mirrorctl({"check", "-", "--display"}, variables, text), 69,
                       {"expected a display, but there is none at all; found 5.\n"});
}

TEST(MirrorctlCheck, PrintsNoControlCharacters) {
    const ProcessResult result =
        check(R"({"\u001b[31m\n": 1, "displayID": "\u001b[0m\u0007", "mode": 0, "devices": [}])");
    EXPECT_FALSE(contains(result.out, "\x1b"));
    const ProcessResult parsed =
        check(R"({"\u001b[31m\n": 1, "displayID": "\u001b[0m\u0007", "mode": 0, "devices": []})");
    EXPECT_EQ(parsed.status, 65);
    EXPECT_FALSE(contains(parsed.out, "\x1b"));
    EXPECT_FALSE(contains(parsed.out, "\x07"));
}

TEST(MirrorctlCheck, TellsWhatIsNoDocumentInWholeSentences) {
    const ProcessResult foreign = check(std::string("\177ELF\0", 5));
    EXPECT_EQ(foreign.status, 65);
    EXPECT_EQ(foreign.out, "standard input:1:5: error: expected JSON text in UTF-8, found a zero "
                           "byte, which would end it.\n"
                           "    To fix it: choose the file that you meant, or save it as UTF-8 "
                           "text.\n"
                           "standard input: 1 error, 0 warnings.\n");
    EXPECT_TRUE(contains(check(std::string(300, '[')).out,
                         "To fix it: choose the file that you meant; a configuration is five "
                         "levels deep.\n"));
}

TEST(MirrorctlCheck, TellsHowToMendWhateverDoesNotParse) {
    for (const char *text :
         {"", "{}{}", "{\"a\":tru}", "{\"a\":1,}", "{\"a\" 1}", "{\"a\":1 \"b\":2}", "[1 2]",
          "{\"a\":\"\\q\"}", "{\"a\":\"\\u12x4\"}", "{\"a\":\"\\ud800\"}", "{\"a\":\"x",
          "{\"a\":\"\xff\"}", "{\"a\":1.}", "{\"a\":1e}", "{\"a\":1e999}"}) {
        SCOPED_TRACE(text);
        test::expectOutput(check(text), 65, {"    To fix it: "});
    }
}

TEST(MirrorctlCheck, RefusesBombs) {
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

TEST(MirrorctlCheck, HasAnAnswerToAnyBytes) {
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
        const ProcessResult result = check(bytes, {"--screen", "640x480"});
        EXPECT_TRUE(result.status == 0 || result.status == 65 || result.status == 68)
            << result.status;
        EXPECT_NE(result.out, "");
        EXPECT_EQ(result.err, "");
    }
}
