// What programs that others wrote make of the packets.
#include "tests/support/panelRecords.h"
#include "tests/tools/lightbridge/bridgeSetup.h"
#include "tests/tools/lightbridge/packets.h"
#include "tools/lightbridge/flashLimiter.h"

#include <filesystem>
#include <set>

using namespace test;
using lightbridge::Stream;

namespace {

bool isInstalled(const std::string &program) {
    return shell("command -v " + program).status == 0;
}

using LightbridgeJudges = BridgeTest;

// A file of packets without a network, each over IPv4 and UDP to this port.
class CaptureFile {
public:
    explicit CaptureFile(std::uint16_t port_) : port(port_) {
        for (const std::uint32_t word : {0xa1b2c3d4u, 0x00040002u, 0u, 0u, 65535u, rawIp})
            append(word);
    }

    void add(const Datagram &payload) {
        const auto size = static_cast<std::uint32_t>(payload.size());
        for (const std::uint32_t word : {0u, 0u, size + 28, size + 28})
            append(word);
        const Datagram header = {0x45,
                                 0,
                                 high(size + 28),
                                 low(size + 28),
                                 0,
                                 0,
                                 0,
                                 0,
                                 64,
                                 17,
                                 0,
                                 0,
                                 127,
                                 0,
                                 0,
                                 1,
                                 127,
                                 0,
                                 0,
                                 1,
                                 high(port),
                                 low(port),
                                 high(port),
                                 low(port),
                                 high(size + 8),
                                 low(size + 8),
                                 0,
                                 0};
        content.append(header.begin(), header.end());
        content.append(payload.begin(), payload.end());
        ++packets;
    }

    std::string content;
    std::size_t packets = 0;

private:
    static constexpr std::uint32_t rawIp = 101;

    static std::uint8_t high(std::uint32_t value) { return static_cast<std::uint8_t>(value >> 8); }
    static std::uint8_t low(std::uint32_t value) { return static_cast<std::uint8_t>(value); }
    void append(std::uint32_t word) {
        content.append(reinterpret_cast<const char *>(&word), sizeof word);
    }

    std::uint32_t port;
};

// Frames of one to 400 pixels, as many as are repeated in an hour.
CaptureFile hourOf(Encode encode, const Stream &stream, std::uint16_t port) {
    CaptureFile file(port);
    for (std::uint64_t frame = 0; frame < 4000; ++frame)
        for (const auto &packet :
             encoded(encode, stream, counting((1 + frame % 400) * stream.channels), frame,
                     frame + 3 >= 4000))
            file.add(packet.bytes);
    return file;
}

// A wall of two rows of two panels, each 8 pixels wide and high in pictures.
config::Document fourPanels() {
    config::DeviceEntry device{"127.0.0.9", 2, 0, 1.0, {}};
    for (int i = 0; i < 4; ++i)
        device.panels.push_back({i, 8 * (i % 2), 8 * (i / 2)});
    return {1, 0, {device}};
}

// Three seconds of panels that change between two colours, at 30 frames a second. Every second
// panel begins with the second colour if they are to be opposed.
std::string filmOf(lightbridge::Colour one, lightbridge::Colour other, bool areOpposed,
                   double hertz, bool isLimited) {
    constexpr int framesPerSecond = 30;
    const config::Document document = fourPanels();
    lightbridge::FlashLimiter limiter(document);
    std::string film;
    for (int frame = 0; frame < 3 * framesPerSecond; ++frame) {
        const int changes = static_cast<int>(frame * 2.0 * hertz / framesPerSecond + 1e-6);
        std::vector<lightbridge::Colour> panels;
        for (int i = 0; i < 4; ++i)
            panels.push_back((changes + (areOpposed ? i : 0)) % 2 == 0 ? one : other);
        if (isLimited)
            limiter.limit(panels,
                          lightbridge::Clock::time_point(std::chrono::hours(1)) +
                              frame * std::chrono::nanoseconds(1'000'000'000) / framesPerSecond);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                const lightbridge::Colour &colour =
                    panels[static_cast<std::size_t>(y / 8 * 2 + x / 8)];
                film.append({static_cast<char>(colour.red), static_cast<char>(colour.green),
                             static_cast<char>(colour.blue)});
            }
    }
    return film;
}

// The highest badness that ffmpeg's filter sees in the film.
double badnessOf(const std::string &path) {
    const ProcessResult result =
        shell("ffmpeg -nostdin -hide_banner -loglevel error -f rawvideo -pix_fmt rgb24 -s 16x16 -r "
              "30 -i " +
              path + " -vf photosensitivity=bypass=1,metadata=print:file=- -f null -");
    const std::string name = "photosensitivity.badness=";
    double most = -1.0;
    for (std::size_t at = 0; (at = result.out.find(name, at)) != std::string::npos;) {
        at += name.size();
        most = std::max(most, std::stod(result.out.substr(at, 20)));
    }
    return most;
}

} // namespace

// More than at 3 Hz counts as bad.
TEST_F(LightbridgeJudges, FfmpegFindsNoMoreFlashesThanThreeASecond) {
    if (!isInstalled("ffmpeg"))
        GTEST_SKIP() << "ffmpeg is not installed";
    const lightbridge::Colour white{255, 255, 255};
    const lightbridge::Colour red{255, 0, 0};
    struct Case {
        lightbridge::Colour bright;
        bool areOpposed;
    };
    for (const Case &one : {Case{white, false}, {red, false}, {white, true}}) {
        const auto badness = [&](double hertz, bool isLimited) {
            return badnessOf(
                folder.write("film", filmOf(one.bright, {}, one.areOpposed, hertz, isLimited)));
        };
        const double most = badness(3.0, false);
        EXPECT_GT(most, 0.5);
        for (const double hertz : {1.0, 5.0, 7.5, 15.0})
            EXPECT_LE(badness(hertz, true), most) << hertz;
        EXPECT_GT(badness(5.0, false), 1.3 * most);
    }
}

TEST_F(LightbridgeJudges, WiresharkFindsNoFaultInAnHourOfFrames) {
    if (!isInstalled("tshark"))
        GTEST_SKIP() << "tshark is not installed";
    struct Case {
        Encode encode;
        Stream stream;
        std::uint16_t port;
        const char *options;
        const char *field;
    };
    const Case cases[] = {{lightbridge::encodeE131,
                           {5, 3, 63000, 100, {1}, "lights"},
                           5568,
                           "--enable-heuristic acn -o acn.dmx_enable:TRUE",
                           "acn.dmx.universe"},
                          {lightbridge::encodeArtNet,
                           {5, 4, 300},
                           6454,
                           "-d udp.port==6454,artnet",
                           "artnet.header.opcode"}};
    for (const Case &one : cases) {
        const CaptureFile file = hourOf(one.encode, one.stream, one.port);
        const std::string path = folder.write("hour.pcap", file.content);
        ASSERT_GT(file.packets, 4000u);
        // For each packet the field, and the severities of any faults.
        const ProcessResult result =
            shell("tshark -n -r " + path + " " + one.options + " -T fields -e " + one.field +
                  " -e _ws.expert.severity 2>" + folder.file("remarks"));
        std::istringstream lines(result.out);
        std::size_t sound = 0;
        for (std::string line; std::getline(lines, line);) {
            const bool isSound = line.find('\t') > 0 && line.ends_with('\t');
            EXPECT_TRUE(isSound) << line;
            sound += isSound ? 1 : 0;
        }
        EXPECT_EQ(sound, file.packets) << fileText(folder.file("remarks"));
    }
}

TEST_F(LightbridgeJudges, OlaReceivesExactlyTheSlots) {
    for (const char *program : {"ip", "unshare"})
        if (!isInstalled(program))
            GTEST_SKIP() << program << " is not installed";
    constexpr int panels = 172; // two more than a universe has pixels
    const auto output = [](const std::string &members) {
        return R"("ip": "127.0.0.1", "device": 0, )" + members;
    };
    const std::string config =
        writeConfig("127.0.0.9", panels,
                    {output(R"("protocol": "e131", "universe": 11)"),
                     output(R"("protocol": "artnet", "universe": 1, "colourOrder": "GRB")")});
    std::vector<Record> records;
    std::string rgb[2];
    std::string grb[2];
    std::string dark[2];
    for (int i = 0; i < panels; ++i) {
        const int red = i + 1;
        const int green = 255 - i;
        const int blue = i * 7 % 256;
        records.push_back({i + 1, static_cast<std::uint32_t>(red << 16 | green << 8 | blue), 0, 5});
        const auto append = [&](std::string *texts, int first, int second, int third) {
            std::string &text = texts[i / 170];
            text += (text.empty() ? "" : ",") + std::to_string(first) + "," +
                    std::to_string(second) + "," + std::to_string(third);
        };
        append(rgb, red, green, blue);
        append(grb, green, red, blue);
        append(dark, 0, 0, 0);
    }
    const Datagram bytes = encode(2, records);
    const std::string datagram = folder.write("datagram", {bytes.begin(), bytes.end()});
    const std::string ola = folder.file("ola");
    std::filesystem::create_directory(ola);
    Process judge({"unshare", "--net", "--pid", "--fork", "--kill-child", "--map-root-user",
                   RECEIVE_WITH_OLA, LIGHTBRIDGE_PROGRAM, config, datagram, ola});
    const ProcessResult result = judge.finish();
    if (result.status == 77 || contains(result.err, "unshare: "))
        GTEST_SKIP() << result.err;
    ASSERT_EQ(result.status, 0) << result.err << fileText(ola + "/log")
                                << fileText(ola + "/bridge");

    std::set<std::string> received;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);)
        received.insert(line);
    EXPECT_EQ(received, (std::set<std::string>{"1 " + grb[0], "1 " + dark[0], "2 " + grb[1],
                                               "2 " + dark[1], "11 " + rgb[0], "11 " + dark[0],
                                               "12 " + rgb[1], "12 " + dark[1]}));
}
