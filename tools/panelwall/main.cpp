#include "tools/panelwall/pngFile.h"
#include "tools/panelwall/session.h"
#include "tools/panelwall/steps.h"
#include "tools/recording/recordingWriter.h"
#include "tools/wall/deviceEndpoints.h"

#include <exception>
#include <iostream>
#include <optional>

using namespace panelwall;

static int runWall(const Options &options) {
    const std::string &path = options.configPath;
    const auto reading = readWallDocument(options);
    if (const auto *status = std::get_if<ExitStatus>(&reading))
        return *status;
    const auto &document = std::get<config::Document>(reading);

    std::vector<config::Problem> problems;
    const auto endpoints = findEndpoints(document, problems);
    if (!problems.empty()) {
        complain(path, problems);
        return exitAddress;
    }
    Signals signals;
    Receiver receiver;
    problems = receiver.open(document, endpoints);
    if (!problems.empty()) {
        complain(path, problems);
        return exitSocket;
    }
    RecordingWriter recorder;
    if (options.recordPath) {
        const std::string reason = recorder.open(*options.recordPath, document, Clock::now());
        if (!reason.empty()) {
            complain(*options.recordPath, "a recording cannot be written here: " + reason);
            return exitFile;
        }
    }
    std::optional<LivePage> page;
    if (const auto status = servePage(options, document, receiver.fds(), page); status != exitOk)
        return status;
    Source source(receiver);
    return Session(options, document, source, options.recordPath ? &recorder : nullptr,
                   page ? &*page : nullptr, signals)
        .run();
}

static int runProgram(const Options &options) {
    if (!options.comparedPaths.empty())
        return compareFiles(options.comparedPaths[0], options.comparedPaths[1]);
    if (options.snapshotPath) {
        if (const auto reason = findObstacle(*options.snapshotPath); !reason.empty()) {
            complain(*options.snapshotPath, "a picture cannot be written here: " + reason);
            return exitFile;
        }
    }
    return options.replayPath ? replay(options) : runWall(options);
}

int main(int argc, char **argv) {
    try {
        Options options;
        if (const auto status = parseOptions(argc, argv, options))
            return *status;
        return runProgram(options);
    } catch (const std::exception &error) {
        std::cerr << "panelwall: " << error.what() << "\n";
        return exitOther;
    }
}
