#include "tools/recording/recordingReader.h"

#include "tools/recording/recordingFormat.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace panelwall {

// What a file claims to hold is believed in steps of this size only.
static constexpr std::size_t stepSize = 65536;

bool RecordingReader::fail(const std::string &text) {
    if (fault.empty())
        fault = text;
    ended = true;
    return false;
}

bool RecordingReader::failCut() {
    if (input.bad())
        return fail("cannot be read beyond byte " + std::to_string(offset));
    return fail("ends at byte " + std::to_string(offset) + ", after " + std::to_string(handedOut) +
                " whole datagrams, without the mark of its end: it was cut off, or is still being "
                "recorded, or its recorder was killed");
}

bool RecordingReader::checkMagic() {
    std::string magic(recordingMagic.size(), '\0');
    input.read(magic.data(), static_cast<std::streamsize>(magic.size()));
    magic.resize(static_cast<std::size_t>(input.gcount()));
    offset = magic.size();
    if (magic == recordingMagic)
        return true;
    if (input.bad())
        return fail("cannot be read");
    if (magic.empty())
        return fail("is empty, and so no recording");
    if (recordingMagic.starts_with(magic))
        return failCut();
    constexpr std::size_t beforeLineEnd = 4;
    if (magic.starts_with(recordingMagic.substr(0, beforeLineEnd)))
        return fail("is a recording whose line ends were changed on its way here; transfer it as a "
                    "binary file");
    return fail("is no recording of a wall: it begins with other bytes");
}

bool RecordingReader::readHead() {
    if (!checkMagic())
        return false;
    const int version = input.get();
    if (version == std::istream::traits_type::eof())
        return failCut();
    ++offset;
    if (version != recordingVersion)
        return fail("is a recording of version " + std::to_string(version) +
                    "; this program reads version " + std::to_string(recordingVersion));
    if (!readNumber(longestRecordedTime, "the time of its beginning"))
        return false;
    const auto size = readNumber(longestRecordedDocument, "the length of its configuration");
    std::string text;
    if (!size || !readBytes(text, *size))
        return false;
    config::Reading reading = config::readText(text);
    if (!reading.problems.empty()) {
        config::Problem &problem = reading.problems.front();
        problem.place = {}; // nobody sees the lines of this text
        return fail("holds a configuration that is not valid: " +
                    config::describe("", problem).substr(2));
    }
    recorded = std::move(reading.document);
    return true;
}

bool RecordingReader::next(RecordedDatagram &datagram) {
    if (ended)
        return false;
    const std::uint64_t recordAt = offset;
    const auto device = readNumber(UINT64_MAX, "a device number");
    if (!device)
        return false;
    if (*device == 0) {
        readEnd();
        return false;
    }
    if (*device > recorded.devices.size())
        return fail("is damaged at byte " + std::to_string(recordAt) + ": device " +
                    std::to_string(*device - 1) + ", but there are only " +
                    std::to_string(recorded.devices.size()));
    const auto at = readTime();
    const auto size =
        at ? readNumber(longestRecordedDatagram, "a datagram's length") : std::nullopt;
    if (!size || !readBytes(datagram.bytes, *size))
        return false;
    datagram.device = *device - 1;
    datagram.time = time = *at;
    ++handedOut;
    return true;
}

void RecordingReader::readEnd() {
    const auto at = readTime();
    const auto count = at ? readNumber(UINT64_MAX, "the number of datagrams") : std::nullopt;
    if (!count)
        return;
    time = *at;
    if (*count != handedOut)
        fail("is damaged: it ends after " + std::to_string(handedOut) + " datagrams, but " +
             std::to_string(*count) + " were recorded");
    else if (input.peek() != std::istream::traits_type::eof())
        fail("goes on at byte " + std::to_string(offset) + ", behind its end");
    ended = true;
}

std::optional<std::chrono::microseconds> RecordingReader::readTime() {
    const auto passed = readNumber(longestRecordedTime, "a time");
    if (!passed)
        return std::nullopt;
    if (*passed > longestRecordedTime - static_cast<std::uint64_t>(time.count())) {
        fail("is damaged before byte " + std::to_string(offset) + ": a time is too large");
        return std::nullopt;
    }
    return time + std::chrono::microseconds(*passed);
}

std::optional<std::uint64_t> RecordingReader::readNumber(std::uint64_t largest, const char *what) {
    const std::uint64_t numberAt = offset;
    std::uint64_t number = 0;
    for (int shift = 0; shift < 64; shift += 7) {
        const int got = input.get();
        if (got == std::istream::traits_type::eof()) {
            failCut();
            return std::nullopt;
        }
        ++offset;
        const auto bits = static_cast<std::uint64_t>(got & 0x7f);
        if (bits << shift >> shift != bits)
            break;
        number |= bits << shift;
        if ((got & 0x80) != 0)
            continue;
        if (number > largest)
            break;
        return number;
    }
    fail("is damaged at byte " + std::to_string(numberAt) + ": " + what + " is too large");
    return std::nullopt;
}

template <typename Bytes> bool RecordingReader::readBytes(Bytes &bytes, std::size_t size) {
    bytes.clear();
    while (bytes.size() < size) {
        const std::size_t before = bytes.size();
        const std::size_t step = std::min(size - before, stepSize);
        bytes.resize(before + step);
        input.read(reinterpret_cast<char *>(bytes.data()) + before,
                   static_cast<std::streamsize>(step));
        const auto got = static_cast<std::size_t>(input.gcount());
        offset += got;
        if (got < step)
            return failCut();
    }
    return true;
}

std::string openRecording(const std::string &path, std::ifstream &stream, RecordingReader &reader) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        return "is no regular file";
    errno = 0;
    stream.open(path, std::ios::binary);
    if (!stream)
        return "cannot be read: " + std::generic_category().message(errno);
    reader.readHead();
    return reader.error();
}

} // namespace panelwall
