// Reads any text as a configuration document: the programs report its errors and accept the
// same documents as the library.
#include "fuzz/manager.h"
#include "fuzz/require.h"
#include "mirror/screenMirrorMac.h"
#include "tools/config/configDocument.h"

#include <rapidjson/reader.h>

using fuzz::require;

namespace {

// Whether the text is JSON, for the recursive or the iterative parser, as `flags` say.
template <unsigned flags> bool isJson(const std::string &text) {
    rapidjson::StringStream stream(text.c_str());
    rapidjson::BaseReaderHandler<> ignore;
    rapidjson::Reader reader;
    return !reader.Parse<flags>(stream, ignore).IsError();
}

void requireSoundPlaces(const config::Reading &reading) {
    for (const config::Problem &problem : reading.problems) {
        require(!problem.message.empty(), "a problem says what it is");
        const std::string line = config::describe("file", problem);
        require(line.find('\n') == std::string::npos, "a problem is told on one line");
    }
}

bool hasErrors(const config::Reading &reading) {
    for (const config::Problem &problem : reading.problems)
        if (problem.severity == config::Severity::Error)
            return true;
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    const config::Reading reading = config::readText(text);
    const bool parsed = reading.tree != nullptr;
    const config::Reading review = config::review(reading, config::ScreenSize{1920, 1080});
    requireSoundPlaces(reading);
    requireSoundPlaces(review);
    require(hasErrors(reading) == hasErrors(review), "a review finds the same errors");
    if (parsed)
        require(isJson<rapidjson::kParseDefaultFlags>(text), "what was parsed is JSON");

    const std::string upToNul = text.c_str();
    const bool json = isJson<rapidjson::kParseIterativeFlag>(upToNul);
    if (parsed)
        require(json, "the library's way of parsing accepts what the programs accept");
    if (json && upToNul.size() < 256) // within the nesting limit of the programs
        require(upToNul.size() < text.size() || parsed, "and nothing else");

    // JSON with errors would stop the process by assertion; the programs protect users from this.
    if (json && hasErrors(reading))
        return 0;
    fuzz::resetManager(static_cast<unsigned>(reading.document.displayID), 16, 9, 32);
    mirrorManager.mode = -7;
    require(fuzz::apply(text) == (json ? 1 : 0), "the library accepts what the programs accept");
    if (!json) {
        require(mirrorManager.mode == -7, "what is no JSON changes nothing");
        return 0;
    }
    require(mirrorManager.mode == reading.document.mode, "both read the same mode");
    require(mirrorManager.devices.size() == reading.document.devices.size(),
            "both read the same devices");
    for (std::size_t i = 0; i < mirrorManager.devices.size(); ++i)
        require(mirrorManager.devices[i].panels.size() == reading.document.devices[i].panels.size(),
                "both read the same panels");
    return 0;
}
