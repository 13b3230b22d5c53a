// The member "lightbridge": its schema, its messages and the limits of the protocols.
#include "tests/support/expectations.h"
#include "tests/support/files.h"
#include "tests/tools/config/goodDocument.h"
#include "tests/tools/config/libraryReading.h"
#include "tools/config/configDocument.h"

#include <gtest/gtest.h>
#include <rapidjson/schema.h>

using config::OutputEntry;
using config::Protocol;
using test::contains;

namespace {

const std::string smallestOutput = R"("protocol": "ddp", "ip": "192.0.2.40", "device": 0)";

// A document with a device of three panels, a device without panels, and these outputs.
std::string documentWith(const std::vector<std::string> &outputs, const std::string &more = "") {
    std::string list;
    for (const std::string &output : outputs)
        list += (list.empty() ? "{" : ", {") + output + "}";
    return test::withValue("/lightbridge", R"({"outputs": [)" + list + "]" + more + "}");
}

std::vector<std::optional<config::Problem>> problemsOf(const std::vector<std::string> &outputs) {
    const config::Reading reading = config::readText(documentWith(outputs));
    EXPECT_TRUE(reading.problems.empty()) << reading.problems[0].message;
    return config::findOutputProblems(reading.document);
}

// The problem of the last of these outputs, as "POINTER: MESSAGE; FIX"; "" if it has none.
std::string lastProblem(const std::vector<std::string> &outputs) {
    const auto problem = problemsOf(outputs).back();
    return problem ? problem->pointer + ": " + problem->message + "; " + problem->fix : "";
}

config::Problem onlyError(const std::string &text) {
    const auto problems = config::readText(text).problems;
    EXPECT_EQ(problems.size(), 1u) << text;
    return problems.empty() ? config::Problem{} : problems[0];
}

OutputEntry output(Protocol protocol, const std::string &order = "RGB", int firstPixel = 0) {
    OutputEntry entry;
    entry.protocol = protocol;
    entry.colourOrder = order;
    entry.firstPixel = firstPixel;
    entry.universe = config::traitsOf(protocol).firstUniverse;
    return entry;
}

} // namespace

TEST(ConfigOutputs, ReadsEveryMember) {
    const auto reading = config::readText(documentWith(
        {R"("protocol": "e131", "ip": "multicast", "device": 0, "port": 5000, "universe": 7,
            "priority": 150, "interface": "192.0.2.1", "firstPixel": 30, "pixelsPerPanel": 4,
            "colourOrder": "GRBW", "gamma": 2.2, "whiteBalance": "#ffE0c0", "brightness": 60,
            "smoothing": 250)"},
        R"(, "atEnd": "#102030", "stopAfter": 5, "framesPerSecond": 25)"));
    ASSERT_TRUE(reading.problems.empty()) << reading.problems[0].message;
    const config::BridgeEntry &bridge = reading.document.bridge.value();
    EXPECT_EQ(bridge.atEnd, "#102030");
    EXPECT_EQ(bridge.stopAfter, 5);
    EXPECT_EQ(bridge.framesPerSecond, 25);
    ASSERT_EQ(bridge.outputs.size(), 1u);
    const OutputEntry &read = bridge.outputs[0];
    EXPECT_EQ(read.protocol, Protocol::E131);
    EXPECT_TRUE(read.isMulticast());
    EXPECT_EQ(read.port, 5000);
    EXPECT_EQ(read.universe, 7);
    EXPECT_EQ(read.priority, 150);
    EXPECT_EQ(read.interface, "192.0.2.1");
    EXPECT_EQ(read.firstPixel, 30);
    EXPECT_EQ(read.pixelsPerPanel, 4);
    EXPECT_EQ(read.channels(), 4u);
    EXPECT_EQ(read.gamma, 2.2);
    EXPECT_EQ(read.whiteBalance, "#ffE0c0");
    EXPECT_EQ(read.brightness, 60);
    EXPECT_EQ(read.smoothing, 250);
    EXPECT_FALSE(problemsOf({smallestOutput})[0]);
}

TEST(ConfigOutputs, TakesTheSchemasDefaults) {
    const auto of = [](const std::string &text) {
        return config::readText(text).document.bridge.value();
    };
    const std::string byDefault = documentWith({smallestOutput});
    const std::string written =
        documentWith({smallestOutput +
                      R"(, "port": 4048, "priority": 100, "firstPixel": 0, "pixelsPerPanel": 1,
             "colourOrder": "RGB", "gamma": 1, "whiteBalance": "#ffffff", "brightness": 100,
             "smoothing": 0)"},
                     R"(, "atEnd": "black", "stopAfter": 0, "framesPerSecond": 50)");
    const auto tree = [](const config::BridgeEntry &bridge) {
        const OutputEntry &entry = bridge.outputs.at(0);
        return std::tuple(bridge.atEnd, bridge.stopAfter, bridge.framesPerSecond, entry.port,
                          entry.priority, entry.firstPixel, entry.pixelsPerPanel, entry.colourOrder,
                          entry.gamma, entry.whiteBalance, entry.brightness, entry.smoothing);
    };
    EXPECT_EQ(tree(of(byDefault)), tree(of(written)));

    // Each value above is the schema's.
    rapidjson::Document schema;
    schema.Parse(test::fileText(SCHEMA_FILE).c_str());
    rapidjson::Document read;
    read.Parse(written.c_str());
    const auto expectDefaults = [&](const char *definition, const rapidjson::Value &values) {
        for (const auto &member : values.GetObject())
            if (!member.value.IsArray() && std::string(member.name.GetString()) != "device")
                EXPECT_EQ(schema["definitions"][definition]["properties"][member.name]["default"],
                          member.value)
                    << member.name.GetString();
    };
    expectDefaults("lightbridge", read["lightbridge"]);
    expectDefaults("output", read["lightbridge"]["outputs"][0]);
}

TEST(ConfigOutputs, HaveThePortsAndFirstUniversesOfTheirProtocols) {
    const auto first = [](const std::string &protocol) {
        return config::readText(documentWith({R"("ip": "192.0.2.40", "device": 0, "protocol": ")" +
                                              protocol + '"'}))
            .document.bridge.value()
            .outputs.at(0);
    };
    EXPECT_EQ(first("ddp").port, 4048);
    EXPECT_EQ(first("e131").port, 5568);
    EXPECT_EQ(first("e131").universe, 1);
    EXPECT_EQ(first("artnet").port, 6454);
    EXPECT_EQ(first("artnet").universe, 0);
    EXPECT_EQ(first("wled").port, 21324);
}

// The programs' verdict on every value of every member is that of a validator of the schema.
TEST(ConfigOutputs, AreJudgedAsTheSchemaSays) {
    rapidjson::Document schemaTree;
    schemaTree.Parse(test::fileText(SCHEMA_FILE).c_str());
    const rapidjson::SchemaDocument schema(schemaTree);
    const rapidjson::Value &definitions = schemaTree["definitions"];
    const char *const values[] = {
        "null",        "true",      "\"\"",         "{}",       "[]",      "0",        "-1",
        "1",           "1.5",       "0.1",          "0.05",     "50",      "51",       "65535",
        "65536",       "1e300",     "2147483648",   "\"ddp\"",  "\"DDP\"", "\"hold\"", "\"GRB\"",
        "\"#a0B0c0\"", "\"#a0B0\"", "\"#0000000\"", "\"wled\"", "10000",   "\"black\""};
    int accepted = 0;
    int refused = 0;
    for (const char *definition : {"lightbridge", "output"})
        for (const auto &property : definitions[definition]["properties"].GetObject())
            for (const char *value : values) {
                rapidjson::Document tree;
                tree.Parse(documentWith({smallestOutput}).c_str());
                rapidjson::Value &object = std::string(definition) == "output"
                                               ? tree["lightbridge"]["outputs"][0]
                                               : tree["lightbridge"];
                rapidjson::Document part(&tree.GetAllocator());
                part.Parse(value);
                object.RemoveMember(property.name.GetString());
                object.AddMember(rapidjson::Value(property.name, tree.GetAllocator()),
                                 static_cast<rapidjson::Value &>(part), tree.GetAllocator());
                const std::string text = test::write(tree);
                rapidjson::SchemaValidator validator(schema);
                const bool valid = tree.Accept(validator);
                EXPECT_EQ(config::readText(text).problems.empty(), valid)
                    << property.name.GetString() << ": " << value;
                EXPECT_TRUE(test::libraryReads(text));
                ++(valid ? accepted : refused);
            }
    EXPECT_GT(accepted, 80);
    EXPECT_GT(refused, 200);
}

TEST(ConfigOutputs, ErrorsSayWhatIsExpectedAndHowToFixIt) {
    config::Problem problem =
        onlyError(documentWith({R"("protocol": "dpd", "ip": "192.0.2.40", "device": 0)"}));
    EXPECT_EQ(problem.pointer, "/lightbridge/outputs/0/protocol");
    EXPECT_EQ(problem.message, "expected one of \"ddp\", \"e131\", \"artnet\", \"wled\", found "
                               "the string \"dpd\"");
    EXPECT_EQ(problem.fix, "write \"ddp\"");
    EXPECT_GT(problem.place.column, 1u);

    problem = onlyError(documentWith({smallestOutput + R"(, "gamma": 11)"}));
    EXPECT_EQ(problem.message, "expected a number from 0.1 to 10, found 11");
    EXPECT_EQ(problem.fix, "choose a number from 0.1 to 10");
    problem = onlyError(documentWith({smallestOutput + R"(, "port": 0)"}));
    EXPECT_EQ(problem.message, "expected an integer from 1 to 65535, found 0");
    EXPECT_EQ(problem.fix, "choose a number from 1 to 65535");
    problem = onlyError(documentWith({}, R"(, "atEnd": "dark")"));
    EXPECT_EQ(problem.message, "expected \"black\", \"hold\" (the last colours) or a colour such "
                               "as \"#201008\", found the string \"dark\"");
    problem = onlyError(documentWith({R"("protocol": "ddp", "device": 0)"}));
    EXPECT_EQ(problem.pointer, "/lightbridge/outputs/0/ip");
    EXPECT_TRUE(contains(problem.fix, R"(add it, such as "ip": "192.0.2.40")"));
    EXPECT_EQ(onlyError(test::withValue("/lightbridge", "[]")).pointer, "/lightbridge");

    const auto problems =
        config::review(config::readText(documentWith({smallestOutput + R"(, "ports": 1)"})), {})
            .problems;
    EXPECT_TRUE(std::any_of(problems.begin(), problems.end(), [](const auto &found) {
        return found.message == "found a member that lightbridge does not read" &&
               found.fix == "rename it to \"port\"" && found.severity == config::Severity::Warning;
    }));
}

TEST(ConfigOutputs, ProblemsNameTheirRemedy) {
    EXPECT_EQ(lastProblem({smallestOutput}), "");
    EXPECT_EQ(lastProblem({R"("protocol": "ddp", "ip": "lamp", "device": 0)"}),
              "/lightbridge/outputs/0/ip: expected an IPv4 or IPv6 address in numbers, such as "
              "192.0.2.7 or 2001:db8::7, found \"lamp\"; write the receiver's own address in "
              "numbers, such as 192.0.2.40; its port is a member of its own");
    EXPECT_EQ(lastProblem({R"("protocol": "e131", "ip": "multicast", "device": 0)"}), "");
    EXPECT_TRUE(contains(lastProblem({R"("protocol": "ddp", "ip": "multicast", "device": 0)"}),
                         "/ip: expected an IPv4"));
    EXPECT_TRUE(contains(
        lastProblem({R"("protocol": "e131", "ip": "multicast", "device": 0, "interface": "eth0")"}),
        "/interface: expected an IPv4 address of this machine, found \"eth0\""));
    EXPECT_TRUE(contains(lastProblem({R"("protocol": "ddp", "ip": "192.0.2.40", "device": 2)"}),
                         "/device: expected the number of a device, which count from 0, found 2 "
                         "of 2"));
    EXPECT_TRUE(contains(lastProblem({R"("protocol": "ddp", "ip": "192.0.2.40", "device": 1)"}),
                         "/device: found a device without panels"));
    EXPECT_TRUE(contains(
        lastProblem({R"("protocol": "e131", "ip": "192.0.2.40", "device": 0, "universe": 0)"}),
        "/universe: expected a universe from 1 to 63999 for E1.31, found 0"));
    EXPECT_TRUE(contains(
        lastProblem(
            {R"("protocol": "artnet", "ip": "192.0.2.40", "device": 0, "universe": 32768)"}),
        "/universe: expected a universe from 0 to 32767 for Art-Net, found 32768"));
}

// The device has three panels.
TEST(ConfigOutputs, RefusesMorePixelsThanTheProtocolHas) {
    const auto with = [](const std::string &members) {
        return lastProblem({R"("ip": "192.0.2.40", "device": 0, )" + members});
    };
    EXPECT_EQ(with(R"("protocol": "artnet", "universe": 32767, "pixelsPerPanel": 56)"), "");
    EXPECT_TRUE(contains(with(R"("protocol": "artnet", "universe": 32767, "pixelsPerPanel": 57)"),
                         "/pixelsPerPanel: expected at most 170 pixels for Art-Net, found 171; "
                         "share the pixels out"));
    EXPECT_EQ(with(R"("protocol": "e131", "universe": 63999, "pixelsPerPanel": 56)"), "");
    EXPECT_NE(with(R"("protocol": "e131", "universe": 63999, "pixelsPerPanel": 57)"), "");
    EXPECT_EQ(with(R"("protocol": "wled", "firstPixel": 65533)"), "");
    EXPECT_TRUE(
        contains(with(R"("protocol": "wled", "firstPixel": 65534)"), "use the protocol ddp"));
    EXPECT_EQ(with(R"("protocol": "wled", "colourOrder": "RGBW", "pixelsPerPanel": 122)"), "");
    EXPECT_NE(with(R"("protocol": "wled", "colourOrder": "RGBW", "pixelsPerPanel": 123)"), "");
    EXPECT_NE(with(R"("protocol": "wled", "colourOrder": "RGBW", "firstPixel": 1)"), "");
    EXPECT_EQ(with(R"("protocol": "ddp", "firstPixel": 999997)"), "");
    EXPECT_NE(with(R"("protocol": "ddp", "firstPixel": 999998)"), "");
}

TEST(ConfigOutputs, RefusesTheSamePixelsTwiceAndKeepsTheOthers) {
    const auto ddp = [](const std::string &members) {
        return R"("protocol": "ddp", "ip": "192.0.2.40", "device": 0)" + members;
    };
    EXPECT_EQ(lastProblem({ddp(""), ddp(R"(, "firstPixel": 3)")}), "");
    EXPECT_EQ(lastProblem({ddp(R"(, "firstPixel": 3)"), ddp("")}), "");
    EXPECT_EQ(lastProblem({ddp(""), ddp(R"(, "port": 4049)")}), "");
    EXPECT_EQ(lastProblem({ddp(R"(, "firstPixel": 10)"), ddp(R"(, "firstPixel": 8)")}),
              "/lightbridge/outputs/1/firstPixel: found pixel 10 again, which output 0 to the same "
              "address has; begin with pixel 13");
    const auto problems =
        problemsOf({ddp(""), ddp(R"(, "firstPixel": 2)"), ddp(R"(, "firstPixel": 3)")});
    EXPECT_FALSE(problems[0]);
    EXPECT_TRUE(problems[1]);
    EXPECT_FALSE(problems[2]);

    const auto e131 = [](const std::string &members) {
        return R"("protocol": "e131", "ip": "multicast", "device": 0)" + members;
    };
    EXPECT_EQ(lastProblem({e131(""), e131(R"(, "universe": 2)")}), "");
    EXPECT_EQ(lastProblem({e131(R"(, "firstPixel": 170)"), e131("")}), "");
    EXPECT_TRUE(contains(lastProblem({e131(R"(, "firstPixel": 168)"), e131(R"(, "universe": 2)")}),
                         "/universe: found universe 2 again, which output 0"));
}

TEST(ConfigOutputs, TellsTheLimitsThatTheyMeet) {
    const auto tell = [](const OutputEntry &entry, std::size_t pixels) {
        return config::describePackets(entry, pixels);
    };
    EXPECT_EQ(tell(output(Protocol::Ddp), 480), "480 pixels in 1 packet of at most 480");
    EXPECT_EQ(tell(output(Protocol::Ddp), 481), "481 pixels in 2 packets of at most 480");
    EXPECT_EQ(tell(output(Protocol::Ddp, "RGBW"), 361), "361 pixels in 2 packets of at most 360");
    EXPECT_EQ(tell(output(Protocol::E131), 170), "170 pixels in universe 1 of at most 170");
    EXPECT_EQ(tell(output(Protocol::E131, "RGB", 170), 171),
              "171 pixels in universes 2 to 3 of at most 170");
    EXPECT_EQ(tell(output(Protocol::ArtNet, "RGBW"), 129),
              "129 pixels in universes 0 to 1 of at most 128");
    EXPECT_EQ(tell(output(Protocol::Wled), 490), "490 pixels in 1 packet of at most 490");
    EXPECT_EQ(tell(output(Protocol::Wled), 491), "491 pixels in 2 packets of at most 489");
    EXPECT_EQ(tell(output(Protocol::Wled, "RGB", 1), 490),
              "490 pixels in 2 packets of at most 489");
    EXPECT_EQ(tell(output(Protocol::Wled, "GRBW"), 367), "367 pixels in 1 packet of at most 367");
}

TEST(ConfigOutputs, AreWrittenIntoDocuments) {
    config::Document document = config::readText(test::goodDocument).document;
    OutputEntry e131 = output(Protocol::E131);
    e131.ip = "192.0.2.41";
    e131.port = 5569;
    e131.universe = 9;
    OutputEntry ddp = output(Protocol::Ddp);
    ddp.ip = "2001:db8::7";
    ddp.port = 4048;
    document.bridge = config::BridgeEntry{{e131, ddp}};
    const config::Reading reading = config::readText(config::documentText(document));
    ASSERT_TRUE(reading.problems.empty());
    for (const auto &problem : config::findOutputProblems(reading.document))
        EXPECT_FALSE(problem) << problem->message;
    const auto &outputs = reading.document.bridge.value().outputs;
    ASSERT_EQ(outputs.size(), 2u);
    EXPECT_EQ(outputs[0].protocol, Protocol::E131);
    EXPECT_EQ(outputs[0].ip, "192.0.2.41");
    EXPECT_EQ(outputs[0].port, 5569);
    EXPECT_EQ(outputs[0].universe, 9);
    EXPECT_EQ(outputs[1].protocol, Protocol::Ddp);
    EXPECT_EQ(outputs[1].ip, "2001:db8::7");
    EXPECT_EQ(outputs[1].port, 4048);
}
