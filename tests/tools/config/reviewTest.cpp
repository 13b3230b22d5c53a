// Warnings, cautions and the places of everything.
#include "tests/support/expectations.h"
#include "tools/config/configDocument.h"

#include <gtest/gtest.h>

using test::contains;

namespace {

// A document with one device, which is valid for a screen of 640 x 480.
std::string document(const std::string &device, const std::string &panels, int mode = 3) {
    return R"({"displayID": 1, "mode": )" + std::to_string(mode) + R"(, "devices": [{)" + device +
           R"("ip": "127.0.40.1", "controlVersion": 2, "shapeType": 0, "scaleFactor": 1,)"
           R"("panels": [)" +
           panels + "]}]}";
}

const std::string panel = R"({"panelID": 1, "centroidX": 639, "centroidY": 0})";
const config::ScreenSize screen{640, 480};

// "severity LINE:COLUMN POINTER" of each problem, one per line.
std::string outline(const std::string &text, std::optional<config::ScreenSize> size = screen) {
    std::string lines;
    for (const auto &problem : config::review(config::readText(text), size).problems) {
        static const char *const names[] = {"error ", "warning ", "caution "};
        lines += names[static_cast<int>(problem.severity)] + std::to_string(problem.place.line) +
                 ":" + std::to_string(problem.place.column) + " " + problem.pointer + "\n";
        EXPECT_NE(problem.message, "");
    }
    return lines;
}

config::Problem only(const std::string &text) {
    const auto problems = config::review(config::readText(text), screen).problems;
    EXPECT_EQ(problems.size(), 1u) << text;
    return problems.empty() ? config::Problem{} : problems[0];
}

} // namespace

TEST(ConfigReview, FindsNothingInAGoodDocument) {
    EXPECT_EQ(outline(document("", panel)), "");
}

TEST(ConfigReview, PlacesMembersAtTheirNamesAndElementsWhereTheyBegin) {
    EXPECT_EQ(outline("{\n"
                      "  \"displayID\":\n"
                      "      \"x\",\r\n"
                      "\t\"mode\" : 3, \"\xC3\xA9\": [[{}], \"\\\"[\"], \"devices\": [\n"
                      "    3,  {\"panels\": [ [], {\"panelID\": null}], \"ip\": 5,\n"
                      "     \"scaleFactor\": 1, \"shapeType\": 1, \"controlVersion\": 2}]\n"
                      "}"),
              "error 2:3 /displayID\n"
              "error 5:5 /devices/0\n"
              "error 5:22 /devices/1/panels/0\n"
              "error 5:27 /devices/1/panels/1/panelID\n"
              "error 5:26 /devices/1/panels/1/centroidX\n"
              "error 5:26 /devices/1/panels/1/centroidY\n"
              "error 5:46 /devices/1/ip\n"
              "warning 4:14 /\xC3\xA9\n");
}

TEST(ConfigReview, PointsToTheMemberThatIsThereAgain) {
    const auto problem = only(R"({"displayID": 1,
 "displayID": {"mode": 1, "displayID": 5},
   "mode": 3, "devices": [{"ip": "::1", "controlVersion": 2, "shapeType": 0, "scaleFactor": 1,
   "panels": [{"panelID": 1, "centroidX": 1, "centroidY": 1}]}]})");
    EXPECT_EQ(problem.pointer, "/displayID");
    EXPECT_EQ(problem.place.line, 2u);
    EXPECT_EQ(problem.message, "found \"displayID\" once more; the library takes the first");
}

TEST(ConfigReview, WarnsOfMembersThatNobodyReads) {
    const auto problem = only(document(R"("a/b~c": {"ip": 5}, )", panel));
    EXPECT_EQ(problem.pointer, "/devices/0/a~1b~0c");
    EXPECT_EQ(problem.place.column, 1 + document(R"("a/b~c": {"ip": 5}, )", panel).find("\"a/b"));
    EXPECT_EQ(outline(document("", R"({"panelID": 1, "x": 2, "centroidX": 1, "centroidY": 1})")),
              "warning 1:142 /devices/0/panels/0/x\n");
    // Editors use this member.
    EXPECT_EQ(outline(document("", panel).insert(1, R"("$schema": "a.json", )")), "");
}

TEST(ConfigReview, WarnsOfPanelsOffTheScreen) {
    EXPECT_EQ(outline(document("", R"({"panelID": 1, "centroidX": 640, "centroidY": -1})")),
              "warning 1:142 /devices/0/panels/0/centroidX\nwarning 1:160 "
              "/devices/0/panels/0/centroidY\n");
    EXPECT_EQ(outline(document("", R"({"panelID": 1, "centroidX": 0, "centroidY": 479})")), "");
    EXPECT_EQ(
        outline(document("", R"({"panelID": 1, "centroidX": 640, "centroidY": -1})"), std::nullopt),
        "");
}

TEST(ConfigReview, WarnsOfIdentifiersThatDoNotFitOrAreThereTwice) {
    const auto wide = [](const std::string &id) {
        return document("",
                        panel + R"(, {"panelID": )" + id + R"(, "centroidX": 1, "centroidY": 1})");
    };
    EXPECT_EQ(outline(wide("65535")), "");
    EXPECT_TRUE(contains(only(wide("65536")).message, "sent as 0"));
    EXPECT_TRUE(contains(only(wide("-1")).message, "sent as 65535"));
    EXPECT_TRUE(contains(only(wide("1")).message, "identifier 1 again, that of panel 0"));
    std::string narrow = wide("257");
    narrow.replace(narrow.find("controlVersion\": 2") + 17, 1, "1");
    const auto problems = config::review(config::readText(narrow), screen).problems;
    ASSERT_EQ(problems.size(), 2u);
    EXPECT_TRUE(contains(problems[0].message, "from 0 to 255, found 257"));
    EXPECT_TRUE(contains(problems[1].message, "identifier 1 again"));
}

TEST(ConfigReview, WarnsOfAddressesThatAreThereTwice) {
    const auto device = [](const std::string &ip, int version) {
        return R"({"ip": ")" + ip + R"(", "controlVersion": )" + std::to_string(version) +
               R"(, "shapeType": 0, "scaleFactor": 1, "panels": [)" + panel + "]}";
    };
    const auto two = [&](const std::string &one, const std::string &other) {
        return R"({"displayID": 1, "mode": 3, "devices": [)" + one + "," + other + "]}";
    };
    EXPECT_EQ(only(two(device("::1", 2), device("0:0::1", 3))).pointer, "/devices/1/ip");
    EXPECT_EQ(outline(two(device("127.0.0.2", 1), device("127.0.0.2", 2))), "");
    EXPECT_EQ(outline(two(device("127.0.0.2", 2), device("127.0.0.3", 2))), "");
}

TEST(ConfigReview, WarnsOfSizesThatMakeNoSense) {
    const auto sized = [](const std::string &scale) {
        std::string text = document("", panel);
        return text.replace(text.find("scaleFactor\": 1") + 14, 1, scale);
    };
    for (const char *scale : {"0", "-1", "0.001", "1e300"})
        EXPECT_EQ(only(sized(scale)).pointer, "/devices/0/scaleFactor") << scale;
    EXPECT_EQ(only(sized("0.0199")).message,
              "expected 0.02 or more for this shapeType, found 0.0199, with which the panels take "
              "their colour from a single pixel");
    EXPECT_EQ(outline(sized("0.02")), "");
    std::string other = sized("0.02");
    other.replace(other.find("shapeType\": 0") + 12, 1, "7");
    EXPECT_EQ(only(other).message.find("expected 0.03 or more"), 0u);
    other.replace(other.find("0.02"), 4, "0.03");
    EXPECT_EQ(outline(other), "");
    EXPECT_EQ(outline(sized("4.8")), "");
    EXPECT_EQ(only(sized("4.9")).pointer, "/devices/0/scaleFactor");
}

TEST(ConfigReview, WarnsOfWhatStaysDark) {
    EXPECT_EQ(only(R"({"displayID": 1, "mode": 0, "devices": []})").pointer, "/devices");
    EXPECT_EQ(only(document("", "")).pointer, "/devices/0/panels");
}

TEST(ConfigReview, WarnsOfDatagramsThatCannotBeSent) {
    std::string panels = panel;
    for (int i = 2; i <= 8188; ++i)
        panels += R"(,{"panelID":)" + std::to_string(i) + R"(,"centroidX":1,"centroidY":1})";
    EXPECT_EQ(outline(document("", panels)), "");
    const auto problem =
        only(document("", panels + R"(,{"panelID":8189,"centroidX":1,"centroidY":1})"));
    EXPECT_EQ(problem.message, "expected at most 8188 panels, found 8189; the datagram would be "
                               "too large to be sent");
}

TEST(ConfigReview, CautionsWhereTheWallCanFlash) {
    for (const int mode : {0, 1, 2}) {
        const auto problem = only(document("", panel, mode));
        EXPECT_EQ(problem.severity, config::Severity::Caution);
        EXPECT_EQ(problem.pointer, "/mode");
        EXPECT_TRUE(contains(problem.message, "seizures"));
    }
}

TEST(ConfigReview, DrawsNoConclusionsFromWhatIsWrong) {
    // Mistyped members are not taken for zeros.
    EXPECT_EQ(outline(R"({"displayID": 1, "mode": "x", "devices": [
{"ip": 1, "controlVersion": 2, "shapeType": 0, "scaleFactor": "big", "panels": [
{"panelID": 0, "centroidX": "x", "centroidY": 1}, {"panelID": null, "centroidX": 1, "centroidY": 1}]}
]})"),
              "error 1:18 /mode\n"
              "error 3:16 /devices/0/panels/0/centroidX\n"
              "error 3:52 /devices/0/panels/1/panelID\n"
              "error 2:48 /devices/0/scaleFactor\n"
              "error 2:2 /devices/0/ip\n");
    EXPECT_EQ(outline("[]"), "error 1:1 \n");
    EXPECT_EQ(outline("{"), "error 1:2 \n");
}

TEST(ConfigReview, BoundsItsList) {
    std::string panels = panel;
    for (int i = 0; i < 5000; ++i)
        panels += R"(,{"panelID":1,"centroidX":-1,"centroidY":-1,"x":1})";
    EXPECT_LE(config::review(config::readText(document("", panels)), screen).problems.size(),
              config::maxProblems + 1);
}

TEST(ConfigReview, IsNotHeldUpByMembersThatNobodyReads) {
    // A quadratic search would take minutes.
    std::string text = R"({"displayID": 1, "mode": 3, "devices": [{)";
    for (int i = 0; i < 500000; ++i)
        text += R"("p": 1, "mode": 2, )";
    text += R"("panels": []}], "mode": 0)";
    for (int i = 0; i < 500000; ++i)
        text += R"(, "mode": 1)";
    const auto problems = config::review(config::readText(text + "}"), screen).problems;
    EXPECT_EQ(problems.size(), config::maxProblems + 1);
}
