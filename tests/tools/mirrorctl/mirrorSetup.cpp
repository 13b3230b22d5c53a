#include "tests/tools/mirrorctl/mirrorSetup.h"

#include <stdexcept>

namespace test {

ProcessResult mirrorctl(std::vector<std::string> arguments, const Variables &variables,
                        const std::string &input) {
    arguments.insert(arguments.begin(), MIRRORCTL);
    return Process(arguments, {.variables = variables, .input = input}).finish();
}

ProcessResult doctor(const Variables &session, std::vector<std::string> arguments,
                     Variables variables, const std::string &input) {
    arguments.insert(arguments.begin(), "doctor");
    variables.insert(session.begin(), session.end());
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE"})
        variables.emplace(name, "");
    return mirrorctl(arguments, variables, input);
}

ProcessResult doctor(const std::string &server, std::vector<std::string> arguments,
                     Variables variables, const std::string &input) {
    return doctor(Variables{{"DISPLAY", server}}, std::move(arguments), std::move(variables),
                  input);
}

Variables refusing(const std::string &function) {
    return {{"LD_PRELOAD", REFUSING_LIBRARY}, {"REFUSE", function}};
}

rapidjson::Document parsed(const std::string &text) {
    rapidjson::Document tree;
    EXPECT_FALSE(tree.Parse(text.c_str()).HasParseError()) << text;
    return tree;
}

std::uint32_t onlyDisplay(const Variables &session) {
    const ProcessResult result = mirrorctl({"displays", "--json"}, session);
    const auto tree = parsed(result.out);
    if (result.status != 0 || tree["displays"].Size() != 1)
        throw std::runtime_error("not one display: " + result.out + result.err);
    return tree["displays"][0]["displayID"].GetUint();
}

std::string lightsText(std::uint32_t displayID, const std::string &ip, int mode) {
    return R"({"displayID": )" + std::to_string(displayID) + R"(, "mode": )" +
           std::to_string(mode) + R"(, "devices": [{"ip": ")" + ip +
           R"(", "controlVersion": 2, "shapeType": 0, "scaleFactor": 1,
               "panels": [{"panelID": 17, "centroidX": 100, "centroidY": 100}]}]})";
}

testing::AssertionResult receives(LightReceiver &light, const Datagram &wanted) {
    for (int i = 0; i < 500; ++i) {
        const auto datagram = light.next();
        if (!datagram)
            return testing::AssertionFailure() << "silence after " << i << " datagrams";
        if (*datagram == wanted)
            return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "only other datagrams";
}

Process ScreenTest::start(std::vector<std::string> arguments, LaunchOptions options) const {
    arguments.insert(arguments.begin(), MIRRORCTL);
    options.variables.merge(screen.variables());
    return Process(arguments, options);
}

ProcessResult ScreenTest::run(const std::vector<std::string> &arguments,
                              const std::string &input) const {
    return start(arguments, {.input = input}).finish();
}

std::string ScreenTest::serverName() const {
    const Variables variables = screen.variables();
    const std::string compositor = variables.at("WAYLAND_DISPLAY");
    return compositor.empty() ? "X server \"" + variables.at("DISPLAY") + "\""
                              : "compositor \"" + compositor + "\"";
}

std::string ScreenTest::lights(const std::string &ip, int mode) const {
    return lightsText(display, ip, mode);
}

} // namespace test
