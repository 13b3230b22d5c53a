#include "tools/panelwall/session.h"

#include "tools/lights/text.h"
#include "tools/panelwall/pngFile.h"
#include "tools/panelwall/statusText.h"

#include <algorithm>
#include <poll.h>
#include <unistd.h>

namespace panelwall {

// The page shows the last minute of at most this many panels, which takes a few megabytes.
static constexpr std::size_t maxHistoryRows = 480;

static constexpr int largestPictureSide = 5120;
static constexpr std::chrono::seconds lineInterval{1};
static constexpr std::chrono::seconds noticeTime{5};

Session::Session(const Options &options_, const config::Document &document_, Receiver &receiver_,
                 Player *player_)
    : options(options_), document(document_), receiver(receiver_), player(player_),
      wall(document_, options_.transitionUnit), screen(options_.screen.value_or(screenSize(wall))),
      live(STDOUT_FILENO), onTerminal(lights::showsColours(STDOUT_FILENO)),
      nextLines(start + lineInterval) {}

int Session::run() {
    beginRecording();
    servePage();
    if (onTerminal)
        live.enter();
    announce();
    while (!ended && !outputGone) {
        show();
        if (page)
            page->show(wall, Clock::now());
        waitUntil(nextDue());
        handleSignals();
        receive();
        if (player != nullptr && player->ended() && !page)
            ended = true;
        if (options.duration && Clock::now() - start >= *options.duration)
            ended = true;
    }
    live.leave();
    for (const std::string &line : deviceLines(wall, Clock::now(), ReasonPlace::SameLine))
        print("ended: " + line);
    const bool recorded = !recorder || finishRecording();
    if ((options.snapshotPath && !saveSnapshot()) || !recorded)
        return exitFile;
    return outputGone ? exitOther : exitOk;
}

void Session::receive() {
    const auto take = [this](std::size_t device, std::span<const std::uint8_t> bytes,
                             Clock::time_point arrival) {
        wall.receive(device, bytes, arrival);
        if (recorder)
            recorder->note(device, bytes, arrival);
    };
    if (player != nullptr ? player->playDue(take) : receiver.readAll(take)) {
        changed = true;
        if (page)
            page->noteChange();
    }
    if (!recorder)
        return;
    recorder->flushBatch();
    if (!recorder->error().empty() && !recordingErrorReported) {
        recordingErrorReported = true;
        tell("the recording ends here: " + recorder->error());
    }
}

void Session::beginRecording() {
    if (!options.recordPath)
        return;
    const std::string &path = *options.recordPath;
    recorder.emplace(path, document, start);
    if (!recorder->error().empty())
        failWith(exitFile, path, "a recording cannot be written here: " + recorder->error());
}

void Session::servePage() {
    if (!options.web)
        return;
    const auto display = static_cast<std::uint32_t>(document.displayID);
    WallFacts facts;
    facts.config = options.replayPath.value_or(options.configPath);
    facts.isRecording = player != nullptr;
    facts.mode = document.mode;
    facts.screen = screen;
    facts.transitionUnit = options.transitionUnit;
    facts.start = start;
    if (options.screen) {
        facts.sizeFrom = "given";
    } else if (const auto measured = measureDisplay(display)) {
        facts.screen = *measured;
        facts.sizeFrom = "display";
    }
    wall.keepHistory(maxHistoryRows);
    page.emplace(display, receiver.fds(), facts);
    if (const auto reason = page->open(options.web->address, options.web->port); !reason.empty()) {
        writeAll(STDERR_FILENO, "panelwall: " + reason + "\n");
        throw exitPage;
    }
    const std::string &path = options.web->linkPath;
    const std::string reason = path.empty() ? "" : page->writeLink(path);
    if (!reason.empty())
        failWith(exitFile, path, "a link to the live page cannot be written here: " + reason);
}

void Session::announce() {
    for (const std::string &line : describeSharedIds(wall))
        tell(line);
    if (onTerminal)
        return;
    for (std::size_t i = 0; i < document.devices.size(); ++i)
        print((player != nullptr ? "replaying: " : "listening: ") +
              lights::nameDevice(i, document.devices[i]) + ", " +
              lights::counted(document.devices[i].panels.size(), "panel"));
    if (page)
        print("live page: " + page->url());
}

void Session::waitUntil(Clock::time_point when) {
    std::vector<pollfd> waiting{{signals.fd(), POLLIN, 0}};
    for (const int fd : receiver.fds())
        waiting.push_back({fd, POLLIN, 0});
    if (page)
        waiting.push_back({page->fd(), POLLIN, 0});
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(when - Clock::now());
    const auto patience = std::clamp<std::int64_t>(left.count(), 0, 60'000);
    poll(waiting.data(), waiting.size(), static_cast<int>(patience));
}

void Session::handleSignals() {
    while (const auto signal = signals.next()) {
        switch (*signal) {
        case SIGUSR1:
            if (options.snapshotPath)
                saveSnapshot();
            else
                tell("no picture written: start with --snapshot FILE to say where it goes");
            break;
        case SIGWINCH:
            live.resize();
            break;
        case SIGTSTP:
            pause();
            break;
        default:
            ended = true;
        }
    }
}

// Restores the shell's screen while the program is stopped.
void Session::pause() {
    live.leave();
    kill(getpid(), SIGSTOP);
    if (onTerminal)
        live.enter();
}

Clock::time_point Session::nextDue() const {
    Clock::time_point due = onTerminal ? live.due(changed) : nextLines;
    if (player != nullptr)
        due = std::min(due, player->due());
    if (page)
        due = std::min(due, page->due());
    if (options.duration)
        due = std::min(due, start + *options.duration);
    return due;
}

void Session::show() {
    const auto now = Clock::now();
    if (!onTerminal) {
        if (now >= nextLines)
            showLines();
        return;
    }
    if (now < live.due(changed))
        return;
    changed = wall.isMoving(now);
    FrameContent content;
    content.title = "panelwall " + (page ? page->url() + "  " : "") +
                    options.replayPath.value_or(options.configPath) + "  " +
                    modeName(document.mode) + "  " + std::to_string(screen.width) + " x " +
                    std::to_string(screen.height) + "  Ctrl-C ends";
    content.devices = deviceLines(wall, now, ReasonPlace::NextLine);
    content.message = message(now);
    if (!live.draw(wall, screen, content, now))
        outputGone = true;
}

void Session::showLines() {
    const auto now = Clock::now();
    while (nextLines <= now)
        nextLines += lineInterval;
    for (const std::string &line : deviceLines(wall, now, ReasonPlace::SameLine))
        print(line);
    const auto printOnce = [this](const std::string &text, bool &told) {
        if (!text.empty() && !told)
            print(text);
        told = !text.empty();
    };
    printOnce(silence(now), silenceTold);
    printOnce(describeFlashes(wall, now), flashesTold);
}

std::string Session::silence(Clock::time_point now) const {
    if (player != nullptr)
        return {};
    return describeSilence(wall, document.mode, start, now);
}

std::string Session::message(Clock::time_point now) const {
    const std::string warning = describeFlashes(wall, now);
    const std::string other = now < noticeEnd ? notice : silence(now);
    return warning + (warning.empty() || other.empty() ? "" : " ") + other;
}

bool Session::saveSnapshot() {
    const std::string &path = *options.snapshotPath;
    const Size largest{std::min(screen.width, largestPictureSide),
                       std::min(screen.height, largestPictureSide)};
    const std::string error =
        writePng(drawFine(wall, Clock::now(), screen, fitInto(screen, largest)), path);
    if (error.empty()) {
        tell("picture written: " + path);
        return true;
    }
    const std::string text = "picture " + path + " cannot be written: " + error;
    if (onTerminal && !ended)
        tell(text);
    else
        writeAll(STDERR_FILENO, "panelwall: " + text + "\n");
    return false;
}

bool Session::finishRecording() {
    recorder->finish(Clock::now());
    const std::string &path = *options.recordPath;
    const std::string amount = lights::counted(recorder->datagrams(), "datagram") + ", " +
                               lights::counted(recorder->bytes(), "byte");
    if (recorder->error().empty()) {
        print("recorded: " + amount + " in " + path);
        return true;
    }
    writeAll(STDERR_FILENO, "panelwall: recording " + path + " is cut off after " + amount + ": " +
                                recorder->error() + "\n");
    return false;
}

void Session::tell(const std::string &text) {
    if (!onTerminal || ended) {
        print(text);
        return;
    }
    notice = notice.empty() || Clock::now() >= noticeEnd ? text : notice + ". " + text;
    noticeEnd = Clock::now() + noticeTime;
    live.resize();
}

// A reader that accepts no output misses lines instead of blocking the wall.
void Session::print(const std::string &text) {
    if (!canWrite(STDOUT_FILENO))
        return;
    if (!writeAll(STDOUT_FILENO, text + "\n"))
        outputGone = true;
}

} // namespace panelwall
