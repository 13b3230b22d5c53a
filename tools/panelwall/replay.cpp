#include "tools/panelwall/steps.h"

#include "tools/panelwall/player.h"
#include "tools/panelwall/session.h"
#include "tools/wall/deviceEndpoints.h"

#include <cstdio>
#include <iostream>

namespace panelwall {

// The document to show and send by: the recording's own, or the one that the command line names
// instead.
static std::variant<config::Document, ExitStatus> chooseDocument(const Options &options,
                                                                 const config::Document &recorded) {
    if (options.configPath.empty())
        return recorded;
    auto other = readWallDocument(options);
    const auto *document = std::get_if<config::Document>(&other);
    if (document == nullptr || document->devices.size() == recorded.devices.size())
        return other;
    complain(options.configPath,
             std::vector<config::Problem>{
                 {"/devices", "there are " + std::to_string(document->devices.size()) +
                                  " devices, but " + std::to_string(recorded.devices.size()) +
                                  " in the recording; a replay needs as many"}});
    return exitDocument;
}

static void reportSending(const Sender &sender) {
    std::string text = "sent: " + std::to_string(sender.sent()) + " datagrams";
    if (sender.failed() > 0)
        text += "; " + std::to_string(sender.failed()) +
                " could not be sent, the last of them because: " + sender.lastFailure();
    std::cout << text << std::endl;
}

int replay(const Options &options) {
    const std::string &path = *options.replayPath;
    std::ifstream stream;
    if (const std::string reason = openRecording(path, stream); !reason.empty()) {
        complain(path, reason);
        return exitRecording;
    }
    RecordingReader reader(stream);
    if (!reader.readHead()) {
        complain(path, reader.error());
        return exitRecording;
    }
    const auto chosen = chooseDocument(options, reader.document());
    if (const auto *status = std::get_if<ExitStatus>(&chosen))
        return *status;
    const auto &document = std::get<config::Document>(chosen);

    const Reach reach = options.send && !options.anywhere ? Reach::Loopback : Reach::Anywhere;
    std::vector<config::Problem> problems;
    const auto endpoints = findEndpoints(document, problems, reach);
    if (!problems.empty()) {
        complain(options.configPath.empty() ? path : options.configPath, problems);
        return exitAddress;
    }
    Sender sender;
    if (options.send) {
        if (const std::string reason = sender.open(endpoints); !reason.empty()) {
            complain(path, "cannot be sent: " + reason);
            return exitSocket;
        }
    }

    Signals signals;
    Player player(reader, options.speed, options.send ? &sender : nullptr);
    std::optional<LivePage> page;
    if (const auto status = servePage(options, document, {}, page); status != exitOk)
        return status;
    Source source(player);
    const int status =
        Session(options, document, source, nullptr, page ? &*page : nullptr, signals).run();
    if (options.send)
        reportSending(sender);
    if (reader.error().empty())
        return status;
    complain(path, reader.error());
    return exitRecording;
}

} // namespace panelwall
