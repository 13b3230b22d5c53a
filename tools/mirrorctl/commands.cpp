#include "tools/mirrorctl/commands.h"

#include "tools/config/modes.h"

namespace mirrorctl {

CLI::Option *addConfig(CLI::App &command, std::string &path, const std::string &help) {
    return command.add_option("CONFIG", path, help)->required()->type_name("");
}

void addScreen(CLI::App &command, std::optional<config::ScreenSize> &size,
               const std::string &help) {
    constexpr std::uint32_t maxPixels = 65536; // per side
    const auto read = [](const std::string &text) {
        return config::parseScreenSize(text, maxPixels);
    };
    addParsed(command, "--screen", size, read, "width x height in pixels, such as 1920x1080", help)
        ->type_name("WxH");
}

CLI::Option *checkSeconds(CLI::Option *option) {
    // Also refuses "nan", which a check for values out of range would accept.
    return option->type_name("SECONDS")->check([](const std::string &text) -> std::string {
        constexpr double most = 1e8;
        double value = 0.0;
        if (CLI::detail::lexical_cast(text, value) && value > 0.0 && value <= most)
            return {};
        return "expected a number of seconds above 0 and up to 100000000, found " + text;
    });
}

void addMode(CLI::App &command, std::optional<std::int32_t> &mode, const std::string &help) {
    addParsed(command, "--mode", mode, config::modeNumber,
              "match, melt, fade or palette, or its number 0 to 3", help)
        ->type_name("MODE");
}

} // namespace mirrorctl
