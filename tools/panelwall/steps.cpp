#include "tools/panelwall/steps.h"

#include "tools/config/textFile.h"

#include <iostream>

namespace panelwall {

void complain(const std::string &path, const std::string &text) {
    std::cerr << "panelwall: " << config::describe(path, {"", text}) << "\n";
}

void refuse(ExitStatus status, const std::string &path,
            const std::vector<config::Problem> &problems) {
    for (const config::Problem &problem : problems)
        std::cerr << "panelwall: " << config::describe(path, problem) << "\n";
    throw Exit{status};
}

void refuse(ExitStatus status, const std::string &path, const std::string &text) {
    complain(path, text);
    throw Exit{status};
}

config::Document readWallDocument(const Options &options) {
    const std::string &path = options.configPath;
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text)
        refuse(exitFile, path, "cannot be read: " + reason);
    config::Reading reading = config::readText(*text);
    if (reading.problems.empty() && reading.document.devices.empty())
        reading.problems.push_back({"/devices", "there is no device to listen for; add one"});
    if (!reading.problems.empty())
        refuse(exitDocument, path, reading.problems);
    return std::move(reading.document);
}

} // namespace panelwall
