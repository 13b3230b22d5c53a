#include "tools/config/configDocument.h"
#include "tools/config/textFile.h"
#include "tools/panelwall/loopbackAddress.h"
#include "tools/panelwall/options.h"
#include "tools/panelwall/pngFile.h"
#include "tools/panelwall/receiver.h"
#include "tools/panelwall/session.h"
#include "tools/panelwall/signals.h"

#include <cstdio>
#include <exception>
#include <iostream>

using namespace panelwall;

static void complain(const std::string &path, const std::vector<config::Problem> &problems) {
    for (const config::Problem &problem : problems)
        std::cerr << "panelwall: " << config::describe(path, problem) << "\n";
}

static int runWall(const Options &options) {
    const std::string &path = options.configPath;
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text) {
        complain(path, {{"", "cannot be read: " + reason}});
        return exitFile;
    }
    config::Reading reading = config::readText(*text);
    if (reading.problems.empty() && reading.document.devices.empty())
        reading.problems.push_back({"/devices", "there is no device to listen for; add one"});
    if (!reading.problems.empty()) {
        complain(path, reading.problems);
        return exitDocument;
    }

    std::vector<config::Problem> problems;
    const auto endpoints = findEndpoints(reading.document, problems);
    if (!problems.empty()) {
        complain(path, problems);
        return exitAddress;
    }
    if (options.snapshotPath) {
        if (reason = findObstacle(*options.snapshotPath); !reason.empty()) {
            complain(*options.snapshotPath, {{"", "a picture cannot be written here: " + reason}});
            return exitFile;
        }
    }
    Signals signals;
    Receiver receiver;
    problems = receiver.open(reading.document, endpoints);
    if (!problems.empty()) {
        complain(path, problems);
        return exitSocket;
    }
    return Session(options, reading.document, receiver, signals).run();
}

int main(int argc, char **argv) {
    try {
        Options options;
        if (const auto status = parseOptions(argc, argv, options))
            return *status;
        return runWall(options);
    } catch (const std::exception &error) {
        std::cerr << "panelwall: " << error.what() << "\n";
        return exitOther;
    }
}
