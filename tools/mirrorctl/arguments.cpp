#include "tools/mirrorctl/arguments.h"

#include "tools/mirrorctl/suitability.h"

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
    if (modeNumber(text))
        return {};
    return "expected match, melt, fade or palette, or its number 0 to 3, found " + text;
}

CLI::Validator secondsArgument() {
    return CLI::Validator(checkSeconds, "SECONDS");
}

CLI::Validator modeArgument() {
    return CLI::Validator(checkMode, "MODE");
}

} // namespace mirrorctl
