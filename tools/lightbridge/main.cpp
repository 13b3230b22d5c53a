// lightbridge: shows on lights with other protocols what light devices would be sent.
#include "tools/lightbridge/bridge.h"

#include <exception>
#include <iostream>
#include <unistd.h>

using namespace lightbridge;

static void print(const std::string &path, const config::Problem &problem) {
    std::cerr << "lightbridge: " << config::describe(path, problem)
              << (problem.fix.empty() ? "" : "; " + problem.fix) << "\n";
}

// Prints a line per problem, and throws the status if there are any.
static void refuseProblems(ExitStatus status, const std::string &path,
                           const std::vector<config::Problem> &problems) {
    for (const config::Problem &problem : problems)
        print(path, problem);
    if (!problems.empty())
        throw status;
}

// Keeps the outputs that can be driven and that the options name; prints why others cannot be.
static void chooseOutputs(const Options &options, config::Reading &reading) {
    const auto problems = config::findOutputProblems(reading.document);
    std::vector<config::OutputEntry> &outputs = reading.document.bridge->outputs;
    std::vector<config::OutputEntry> chosen;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (options.output && *options.output != i)
            continue;
        if (!problems[i]) {
            chosen.push_back(outputs[i]);
            continue;
        }
        std::vector<config::Problem> located{*problems[i]};
        config::locate(reading, located);
        located[0].message += "; the output is left out";
        print(options.configPath, located[0]);
    }
    outputs = std::move(chosen);
}

// Reads the document. Refuses an invalid one, and one without outputs that can be driven.
static config::Document readDocument(const Options &options) {
    const std::string &path = options.configPath;
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text)
        refuseProblems(exitFile, path, {{"", "cannot be read: " + reason}});
    config::Reading reading = config::readText(*text);
    refuseProblems(exitDocument, path, reading.problems);
    if (!reading.document.bridge)
        refuseProblems(exitDocument, path,
                       {{"/lightbridge",
                         "expected an object with the outputs, found no member of "
                         "this name",
                         "let mirrorctl layout --bridge make a configuration"}});
    chooseOutputs(options, reading);
    if (reading.document.bridge->outputs.empty())
        refuseProblems(exitDocument, path,
                       {{"/lightbridge/outputs", "there is no output that can be driven"}});
    return std::move(reading.document);
}

// Identifies this machine and configuration in every run: only one program can listen at the
// device's address.
static Sender findSender(const config::Document &document) {
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    std::string reason;
    const auto machine = config::readTextFile("/etc/machine-id", reason);
    const config::DeviceEntry &device = document.devices.front();
    Sender sender =
        senderFor(host + machine.value_or("") + lights::endpointText(device.ip, device.port()));
    sender.name = std::string("lightbridge on ") + host;
    return sender;
}

static std::optional<Pattern> choosePattern(const Options &options, config::Document &document) {
    if (options.command == Command::Run)
        return std::nullopt;
    if (options.command == Command::Test)
        return testPattern(document);
    auto pattern = options.isPixel && options.number >= 0
                       ? identifyPixel(document, static_cast<std::size_t>(options.number))
                       : identifyPanel(document, options.number);
    if (!pattern)
        refuseProblems(
            exitUsage, options.configPath,
            {{"", std::string("no output has the ") + (options.isPixel ? "pixel " : "panel ") +
                      std::to_string(options.number)}});
    return pattern;
}

int main(int argc, char **argv) {
    try {
        const Options options = parseOptions(argc, argv);
        config::Document document = readDocument(options);
        const Sender sender = findSender(document);
        const auto pattern = choosePattern(options, document);
        panelwall::Receiver receiver;
        if (!pattern) {
            std::vector<config::Problem> problems;
            const auto endpoints = panelwall::findEndpoints(document, problems);
            refuseProblems(exitAddress, options.configPath, problems);
            refuseProblems(exitSocket, options.configPath, receiver.open(document, endpoints));
        }
        Bridge(options, document, sender, receiver, pattern ? &*pattern : nullptr).run();
        return exitOk;
    } catch (const ExitStatus status) {
        return status;
    } catch (const std::exception &error) {
        std::cerr << "lightbridge: " << error.what() << "\n";
        return exitOther;
    }
}
