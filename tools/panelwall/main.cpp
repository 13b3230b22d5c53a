#include "tools/lights/text.h"
#include "tools/panelwall/pngFile.h"
#include "tools/panelwall/session.h"
#include "tools/recording/compareRecordings.h"

#include <exception>
#include <iostream>

using namespace panelwall;

// Prints a line per problem, and throws the status if there are any.
static void refuseProblems(ExitStatus status, const std::string &path,
                           const std::vector<config::Problem> &problems) {
    for (const config::Problem &problem : problems)
        std::cerr << "panelwall: " << config::describe(path, problem) << "\n";
    if (!problems.empty())
        throw status;
}

// Reads the document at `options.configPath`; refuses an invalid one and one without devices.
static config::Document readWallDocument(const Options &options) {
    const std::string &path = options.configPath;
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text)
        failWith(exitFile, path, "cannot be read: " + reason);
    config::Reading reading = config::readText(*text);
    if (reading.problems.empty() && reading.document.devices.empty())
        reading.problems.push_back({"/devices", "there is no device to listen for; add one"});
    refuseProblems(exitDocument, path, reading.problems);
    return std::move(reading.document);
}

// Listens until the program is to end; returns an exit status.
static int runWall(const Options &options) {
    const config::Document document = readWallDocument(options);
    std::vector<config::Problem> problems;
    const auto endpoints = findEndpoints(document, problems);
    refuseProblems(exitAddress, options.configPath, problems);
    Receiver receiver;
    refuseProblems(exitSocket, options.configPath, receiver.open(document, endpoints));
    return Session(options, document, receiver, nullptr).run();
}

// The document to use for display and sending: the one that the command line names, else the
// recording's own.
static config::Document chooseDocument(const Options &options, const config::Document &recorded) {
    if (options.configPath.empty())
        return recorded;
    config::Document other = readWallDocument(options);
    if (other.devices.size() != recorded.devices.size())
        refuseProblems(
            exitDocument, options.configPath,
            {{"/devices", "expected " + lights::counted(recorded.devices.size(), "device") +
                              " as in the recording, found " +
                              std::to_string(other.devices.size())}});
    return other;
}

// Plays the recording and returns an exit status. Refuses a damaged recording after playing it up
// to the damage.
static int replay(const Options &options) {
    const std::string &path = *options.replayPath;
    RecordingReader reader(path);
    if (!reader.error().empty())
        failWith(exitRecording, path, reader.error());
    const config::Document document = chooseDocument(options, reader.document());

    const Reach reach = options.send && !options.anywhere ? Reach::Loopback : Reach::Anywhere;
    std::vector<config::Problem> problems;
    const auto endpoints = findEndpoints(document, problems, reach);
    refuseProblems(exitAddress, options.configPath.empty() ? path : options.configPath, problems);
    Sender sender;
    if (options.send) {
        if (const std::string reason = sender.open(endpoints); !reason.empty())
            failWith(exitSocket, path, "cannot be sent: " + reason);
    }

    Player player(reader, options.speed, options.send ? &sender : nullptr);
    Receiver none;
    Session session(options, document, none, &player);
    const int status = session.run();
    if (options.send)
        std::cout << sender.report() << std::endl;
    if (!reader.error().empty())
        failWith(exitRecording, path, reader.error());
    return status;
}

// The usual exit statuses of programs that compare files.
enum { theSame = 0, different = 1, failed = 2 };

// Prints where the recordings at these two paths differ. Returns `failed` when one of them cannot
// be read to its end, after a comparison up to there.
static int compareFiles(const std::vector<std::string> &paths) {
    bool readable = true;
    for (const std::string &path : paths) {
        const RecordingReader reader(path);
        if (!reader.error().empty()) {
            printError(path, reader.error());
            readable = false;
        }
    }
    if (!readable)
        return failed;

    const Comparison comparison =
        compareRecordings([&](Side side) { return RecordingReader(paths[side]); });
    std::cout << "first: " << paths[first] << "\nsecond: " << paths[second] << "\n";
    for (const std::string &line : describe(comparison))
        std::cout << line << "\n";
    std::cout.flush();
    bool whole = static_cast<bool>(std::cout);
    for (const Side side : bothSides) {
        if (comparison.errors[side].empty())
            continue;
        printError(paths[side], comparison.errors[side] + "; compared up to there");
        whole = false;
    }
    if (!whole)
        return failed;
    return comparison.differs() ? different : theSame;
}

int main(int argc, char **argv) {
    int failure = exitOther; // the exit status after an exception
    try {
        const Options options = parseOptions(argc, argv);
        if (!options.comparedPaths.empty()) {
            failure = failed;
            return compareFiles(options.comparedPaths);
        }
        if (options.snapshotPath) {
            const std::string &path = *options.snapshotPath;
            if (const auto reason = findObstacle(path); !reason.empty())
                failWith(exitFile, path, "a picture cannot be written here: " + reason);
        }
        return options.replayPath ? replay(options) : runWall(options);
    } catch (const ExitStatus status) {
        return status;
    } catch (const std::exception &error) {
        std::cerr << "panelwall: " << error.what() << "\n";
        return failure;
    }
}
