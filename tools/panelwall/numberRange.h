// Numbers on the command line.
#pragma once

#include <CLI/CLI.hpp>

namespace panelwall {

// Accepts a number from `least` to `most`, and nothing else: no "nan", which compares with neither.
inline auto numberFrom(double least, double most) {
    return [least, most](const std::string &text) {
        double number = 0.0;
        if (CLI::detail::lexical_cast(text, number) && number >= least && number <= most)
            return std::string();
        return "not a number from " + CLI::detail::to_string(least) + " to " +
               CLI::detail::to_string(most) + ": " + text;
    };
}

} // namespace panelwall
