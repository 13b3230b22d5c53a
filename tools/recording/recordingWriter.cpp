#include "tools/recording/recordingWriter.h"

#include "tools/recording/recordingFormat.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace panelwall {

// A batch that exceeds this many bytes is written early. In a flood only each such part is sorted.
static constexpr std::size_t largestBatch = 1u << 20;

RecordingWriter::RecordingWriter(const std::string &path, const config::Document &document,
                                 Clock::time_point start)
    : begin(start) {
    const std::string text = config::documentText(document);
    if (text.size() > longestRecordedDocument) {
        failure = "the configuration is too large for a recording";
        return;
    }
    file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) {
        failure = std::generic_category().message(errno);
        return;
    }
    const auto startOnCalendar = std::chrono::system_clock::now() - (Clock::now() - start);
    std::string head(recordingMagic);
    head += static_cast<char>(recordingVersion);
    appendNumber(head, static_cast<std::uint64_t>(std::max<std::int64_t>(
                           0, std::chrono::duration_cast<std::chrono::microseconds>(
                                  startOnCalendar.time_since_epoch())
                                  .count())));
    appendNumber(head, text.size());
    write(head + text);
}

RecordingWriter::~RecordingWriter() {
    if (file >= 0)
        close(file);
}

void RecordingWriter::note(std::size_t device, std::span<const std::uint8_t> bytes,
                           Clock::time_point arrival) {
    noted.push_back({arrival, device, notedBytes.size(), bytes.size()});
    notedBytes.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    if (notedBytes.size() + noted.size() * sizeof(Noted) > largestBatch)
        flushBatch();
}

void RecordingWriter::flushBatch() {
    std::stable_sort(noted.begin(), noted.end(), [](const Noted &left, const Noted &right) {
        return left.arrival < right.arrival;
    });
    std::string records;
    for (const Noted &one : noted) {
        appendNumber(records, one.device + 1);
        appendNumber(records, advanceTo(one.arrival));
        appendNumber(records, one.size);
        records.append(notedBytes, one.offset, one.size);
    }
    write(records);
    if (failure.empty())
        writtenDatagrams += noted.size();
    noted.clear();
    notedBytes.clear();
}

void RecordingWriter::finish(Clock::time_point end) {
    flushBatch();
    std::string record;
    appendNumber(record, 0);
    appendNumber(record, advanceTo(end));
    appendNumber(record, writtenDatagrams);
    write(record);
    if (file >= 0 && close(file) != 0 && failure.empty())
        failure = std::generic_category().message(errno);
    file = -1;
}

std::uint64_t RecordingWriter::advanceTo(Clock::time_point time) {
    const auto sinceBegin = std::chrono::duration_cast<std::chrono::microseconds>(time - begin);
    const auto passed = std::max(sinceBegin - lastTime, std::chrono::microseconds::zero());
    lastTime += passed;
    return static_cast<std::uint64_t>(passed.count());
}

void RecordingWriter::write(const std::string &text) {
    std::string_view rest = text;
    while (failure.empty() && !rest.empty()) {
        const ssize_t size = ::write(file, rest.data(), rest.size());
        if (size >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(size));
            writtenBytes += static_cast<std::uint64_t>(size);
        } else if (errno != EINTR) {
            failure = std::generic_category().message(errno);
        }
    }
}

} // namespace panelwall
