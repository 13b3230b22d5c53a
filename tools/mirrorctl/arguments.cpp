#include "tools/mirrorctl/arguments.h"

#include "tools/config/modes.h"
#include "tools/lights/deviceAddress.h"
#include "tools/mirrorctl/layout/layoutPlan.h"

namespace mirrorctl {

// The timer's range everywhere; above all no "nan", which no comparison refuses.
static std::string checkSeconds(const std::string &text) {
    constexpr double most = 1e8;
    double value = 0.0;
    if (CLI::detail::lexical_cast(text, value) && value > 0.0 && value <= most)
        return {};
    return "expected a number of seconds above 0 and up to 100000000, found " + text;
}

static std::string checkMode(const std::string &text) {
    if (config::modeNumber(text))
        return {};
    return "expected match, melt, fade or palette, or its number 0 to 3, found " + text;
}

std::optional<config::ScreenSize> parseSize(const std::string &text) {
    return config::parseScreenSize(text, 65536);
}

static std::string checkSize(const std::string &text) {
    if (parseSize(text))
        return {};
    return "expected width x height in pixels, such as 1920x1080, found " + text;
}

CLI::Validator sizeArgument() {
    return CLI::Validator(checkSize, "");
}

static std::string checkShape(const std::string &text) {
    if (parseShape(text))
        return {};
    return "expected rows x columns, such as 4x6, or strip:N, with at most " +
           std::to_string(mostPanels) + " panels, found " + text;
}

static std::string checkAddress(const std::string &text) {
    const auto problem = config::addressProblem(text);
    return problem ? problem->message + "; " + problem->remedy : std::string();
}

CLI::Validator shapeArgument() {
    return CLI::Validator(checkShape, "");
}

CLI::Validator addressArgument() {
    return CLI::Validator(checkAddress, "");
}

CLI::Validator secondsArgument() {
    return CLI::Validator(checkSeconds, "");
}

CLI::Validator modeArgument() {
    return CLI::Validator(checkMode, "");
}

} // namespace mirrorctl
