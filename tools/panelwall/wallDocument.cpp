#include "tools/panelwall/wallDocument.h"

#include "tools/config/textFile.h"
#include "tools/panelwall/complaint.h"

namespace panelwall {

std::variant<config::Document, ExitStatus> readWallDocument(const Options &options) {
    const std::string &path = options.configPath;
    std::string reason;
    const auto text = config::readTextFile(path, reason);
    if (!text) {
        complain(path, "cannot be read: " + reason);
        return exitFile;
    }
    config::Reading reading = config::readText(*text);
    if (reading.problems.empty() && reading.document.devices.empty())
        reading.problems.push_back({"/devices", "there is no device to listen for; add one"});
    if (!reading.problems.empty()) {
        complain(path, reading.problems);
        return exitDocument;
    }
    return std::move(reading.document);
}

} // namespace panelwall
