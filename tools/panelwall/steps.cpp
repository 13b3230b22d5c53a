#include "tools/panelwall/steps.h"

#include "tools/config/textFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace panelwall {

void complain(const std::string &path, const std::vector<config::Problem> &problems) {
    for (const config::Problem &problem : problems)
        std::cerr << "panelwall: " << config::describe(path, problem) << "\n";
}

void complain(const std::string &path, const std::string &text) {
    complain(path, std::vector<config::Problem>{{"", text}});
}

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

// Always a new file, so that nobody who may read an older one can read this. What is wrong, or
// nothing.
static std::string writeLink(const std::string &path, const std::string &url) {
    const std::string text =
        "<!doctype html><meta http-equiv=\"refresh\" content=\"0; url=" + url + "\">\n";
    unlink(path.c_str());
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    const bool written =
        fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is constant or the thread's own
    const std::string reason = written ? "" : std::strerror(errno);
    if (fd >= 0)
        close(fd);
    return reason;
}

ExitStatus servePage(const Options &options, const config::Document &document,
                     std::vector<int> sockets, std::optional<LivePage> &page) {
    if (!options.web)
        return exitOk;
    page.emplace(static_cast<std::uint32_t>(document.displayID), std::move(sockets));
    if (const auto reason = page->open(options.web->address, options.web->port); !reason.empty()) {
        std::cerr << "panelwall: " << reason << "\n";
        return exitPage;
    }
    const std::string &path = options.web->linkPath;
    if (path.empty())
        return exitOk;
    const std::string reason = writeLink(path, page->url());
    if (reason.empty())
        return exitOk;
    complain(path, "a link to the live page cannot be written here: " + reason);
    return exitFile;
}

} // namespace panelwall
