#include "tools/mirrorctl/commands.h"

#include "tools/config/modes.h"

namespace mirrorctl {

CLI::Option *addConfig(CLI::App &command, std::string &path, const std::string &help) {
    return command.add_option("CONFIG", path, help)->required()->type_name("");
}

void addScreen(CLI::App &command, std::string &size, const std::string &help) {
    const auto check = [](const std::string &text) -> std::string {
        if (config::parseScreenSize(text, mostPixels))
            return {};
        return "expected width x height in pixels, such as 1920x1080, found " + text;
    };
    command.add_option("--screen", size, help)->type_name("WxH")->check(check);
}

CLI::Option *checkSeconds(CLI::Option *option) {
    // Above all no "nan", which no comparison refuses.
    return option->type_name("SECONDS")->check([](const std::string &text) -> std::string {
        constexpr double most = 1e8;
        double value = 0.0;
        if (CLI::detail::lexical_cast(text, value) && value > 0.0 && value <= most)
            return {};
        return "expected a number of seconds above 0 and up to 100000000, found " + text;
    });
}

CLI::Option *checkMode(CLI::Option *option) {
    return option->type_name("MODE")->check([](const std::string &text) -> std::string {
        if (config::modeNumber(text))
            return {};
        return "expected match, melt, fade or palette, or its number 0 to 3, found " + text;
    });
}

} // namespace mirrorctl
