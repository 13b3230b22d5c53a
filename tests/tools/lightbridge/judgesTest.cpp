// What programs that others wrote make of the packets.
#include "tests/support/panelRecords.h"
#include "tests/tools/lightbridge/bridgeSetup.h"
#include "tests/tools/lightbridge/packets.h"

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

} // namespace

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
    for (const char *program : {"olad", "ola_recorder", "ip", "unshare"})
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
        GTEST_SKIP() << "no network namespace can be made: " << result.err;
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
