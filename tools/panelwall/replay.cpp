#include "tools/panelwall/session.h"
#include "tools/panelwall/steps.h"

#include <iostream>

namespace panelwall {

// The document to show and send by: the recording's own, or the one that the command line names
// instead.
static config::Document chooseDocument(const Options &options, const config::Document &recorded) {
    if (options.configPath.empty())
        return recorded;
    config::Document other = readWallDocument(options);
    if (other.devices.size() != recorded.devices.size())
        refuse(exitDocument, options.configPath,
               {{"/devices", "there are " + std::to_string(other.devices.size()) +
                                 " devices, but " + std::to_string(recorded.devices.size()) +
                                 " in the recording; a replay needs as many"}});
    return other;
}

int replay(const Options &options) {
    const std::string &path = *options.replayPath;
    std::ifstream stream;
    if (const std::string reason = openRecording(path, stream); !reason.empty())
        refuse(exitRecording, path, reason);
    RecordingReader reader(stream);
    if (!reader.readHead())
        refuse(exitRecording, path, reader.error());
    const config::Document document = chooseDocument(options, reader.document());

    const Reach reach = options.send && !options.anywhere ? Reach::Loopback : Reach::Anywhere;
    std::vector<config::Problem> problems;
    const auto endpoints = findEndpoints(document, problems, reach);
    if (!problems.empty())
        refuse(exitAddress, options.configPath.empty() ? path : options.configPath, problems);
    Sender sender;
    if (options.send) {
        if (const std::string reason = sender.open(endpoints); !reason.empty())
            refuse(exitSocket, path, "cannot be sent: " + reason);
    }

    Player player(reader, options.speed, options.send ? &sender : nullptr);
    Receiver none;
    Session session(options, document, none, &player);
    const int status = session.run();
    if (options.send)
        std::cout << sender.report() << std::endl;
    if (!reader.error().empty())
        refuse(exitRecording, path, reader.error());
    return status;
}

} // namespace panelwall
