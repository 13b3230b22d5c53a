#include "tools/recording/recordingReader.h"

#include "tools/lights/text.h"
#include "tools/recording/recordingFormat.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace panelwall {

// Buffers grow in steps of this size, because a damaged file may claim any length.
static constexpr std::size_t stepSize = 65536;

RecordingReader::RecordingReader(std::unique_ptr<std::istream> stream) : input(std::move(stream)) {
    readHead();
}

RecordingReader::RecordingReader(const std::string &path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        fault = "is no regular file";
        return;
    }
    errno = 0;
    input = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (*input)
        readHead();
    else
        fault = "cannot be read: " + std::generic_category().message(errno);
}

std::runtime_error RecordingReader::cutOff() const {
    const std::string at = std::to_string(offset);
    if (input->bad())
        return std::runtime_error("cannot be read beyond byte " + at);
    return std::runtime_error("ends at byte " + at + ", after " +
                              lights::counted(handedOut, "whole datagram") +
                              ", without an end record: it was cut off, or is still being "
                              "recorded, or its recorder was killed");
}

void RecordingReader::checkMagic() {
    std::string magic(recordingMagic.size(), '\0');
    input->read(magic.data(), static_cast<std::streamsize>(magic.size()));
    magic.resize(static_cast<std::size_t>(input->gcount()));
    offset = magic.size();
    if (magic == recordingMagic)
        return;
    if (input->bad())
        throw std::runtime_error("cannot be read");
    if (magic.empty())
        throw std::runtime_error("is empty, and so no recording");
    if (recordingMagic.starts_with(magic))
        throw cutOff();
    constexpr std::size_t beforeLineEnd = 4;
    if (magic.starts_with(recordingMagic.substr(0, beforeLineEnd)))
        throw std::runtime_error("is a recording whose line ends were changed on its way here; "
                                 "transfer it as a binary file");
    throw std::runtime_error("is not a recording of a wall: its first bytes are different");
}

void RecordingReader::readHead() {
    try {
        checkMagic();
        const int version = readByte();
        if (version != recordingVersion)
            throw std::runtime_error("is a recording of version " + std::to_string(version) +
                                     "; this program reads version " +
                                     std::to_string(recordingVersion));
        readNumber(longestRecordedTime, "the time of its beginning");
        std::string text;
        readBytes(text, readNumber(longestRecordedDocument, "the length of its configuration"));
        config::Reading reading = config::readText(text);
        if (!reading.problems.empty()) {
            config::Problem &problem = reading.problems.front();
            problem.place = {}; // the user never sees this text, so its line numbers are useless
            throw std::runtime_error("holds a configuration that is not valid: " +
                                     config::describe("", problem).substr(2));
        }
        recorded = std::move(reading.document);
    } catch (const std::runtime_error &found) {
        fault = found.what();
    }
}

bool RecordingReader::next(RecordedDatagram &datagram) {
    if (ended || !fault.empty())
        return false;
    try {
        const std::uint64_t recordAt = offset;
        const std::uint64_t device = readNumber(UINT64_MAX, "a device number");
        if (device == 0) {
            readEnd();
            return false;
        }
        if (device > recorded.devices.size())
            throw std::runtime_error("is damaged at byte " + std::to_string(recordAt) +
                                     ": device " + std::to_string(device - 1) +
                                     ", but there are only " +
                                     std::to_string(recorded.devices.size()));
        const auto at = readTime();
        readBytes(datagram.bytes, readNumber(longestRecordedDatagram, "a datagram's length"));
        datagram.device = device - 1;
        datagram.time = latest = at;
        ++handedOut;
        return true;
    } catch (const std::runtime_error &found) {
        fault = found.what();
        return false;
    }
}

void RecordingReader::readEnd() {
    const auto at = readTime();
    const std::uint64_t count = readNumber(UINT64_MAX, "the number of datagrams");
    latest = at;
    ended = true;
    if (count != handedOut)
        throw std::runtime_error("is damaged: it ends after " +
                                 lights::counted(handedOut, "datagram") + ", but " +
                                 std::to_string(count) + " were recorded");
    if (input->peek() != std::istream::traits_type::eof())
        throw std::runtime_error("has more data from byte " + std::to_string(offset) +
                                 " on, after its end");
}

std::chrono::microseconds RecordingReader::readTime() {
    const std::uint64_t passed = readNumber(longestRecordedTime, "a time");
    if (passed > longestRecordedTime - static_cast<std::uint64_t>(latest.count()))
        throw std::runtime_error("is damaged before byte " + std::to_string(offset) +
                                 ": a time is too large");
    return latest + std::chrono::microseconds(passed);
}

int RecordingReader::readByte() {
    const int byte = input->get();
    if (byte == std::istream::traits_type::eof())
        throw cutOff();
    ++offset;
    return byte;
}

std::uint64_t RecordingReader::readNumber(std::uint64_t largest, const char *what) {
    const std::uint64_t numberAt = offset;
    std::uint64_t number = 0;
    for (int shift = 0; shift < 64; shift += 7) {
        const int byte = readByte();
        const auto bits = static_cast<std::uint64_t>(byte & 0x7f);
        if (bits << shift >> shift != bits)
            break;
        number |= bits << shift;
        if ((byte & 0x80) != 0)
            continue;
        if (number > largest)
            break;
        return number;
    }
    throw std::runtime_error("is damaged at byte " + std::to_string(numberAt) + ": " + what +
                             " is too large");
}

template <typename Bytes> void RecordingReader::readBytes(Bytes &bytes, std::size_t size) {
    bytes.clear();
    while (bytes.size() < size) {
        const std::size_t before = bytes.size();
        const std::size_t step = std::min(size - before, stepSize);
        bytes.resize(before + step);
        input->read(reinterpret_cast<char *>(bytes.data()) + before,
                    static_cast<std::streamsize>(step));
        const auto got = static_cast<std::size_t>(input->gcount());
        offset += got;
        if (got < step)
            throw cutOff();
    }
}

} // namespace panelwall
