// A host in C++: lists the displays, mirrors the first one onto a light device for some seconds,
// and shows the data sent and the colours on the screen.
//
//     mirrorScreen ADDRESS [SECONDS]
#include "screenMirror.h"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <regex>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

struct Display {
    std::uint32_t id = 0;
    unsigned width = 0;
    unsigned height = 0;
};

// The numbers in each match of `pattern`, which has three groups. A real host uses a JSON parser.
std::vector<std::vector<unsigned long>> numbersIn(const std::string &text,
                                                  const std::regex &pattern) {
    std::vector<std::vector<unsigned long>> all;
    for (std::sregex_iterator i(text.begin(), text.end(), pattern), end; i != end; ++i)
        all.push_back({std::stoul((*i)[1]), std::stoul((*i)[2]), std::stoul((*i)[3])});
    return all;
}

// The library accepts only numeric addresses and does not report others, so check them here.
bool isAddress(const char *text) {
    in6_addr address;
    return inet_pton(AF_INET, text, &address) == 1 || inet_pton(AF_INET6, text, &address) == 1;
}

Display firstDisplay() {
    static const std::regex pattern(R"(\{"displayID":(\d+),"width":(\d+),"height":(\d+)\})");
    const auto displays = numbersIn(screenMirror::displays(), pattern);
    for (const auto &display : displays)
        std::cout << "display " << display[0] << ": " << display[1] << " x " << display[2] << "\n";
    if (displays.empty())
        throw screenMirror::Error(
            "there is no display to mirror; on Linux, DISPLAY names an X server");
    const auto &first = displays.front();
    return {static_cast<std::uint32_t>(first[0]), static_cast<unsigned>(first[1]),
            static_cast<unsigned>(first[2])};
}

// Four panels in a row across the middle of the display.
std::string configuration(const Display &display, const std::string &address) {
    std::string panels;
    for (unsigned i = 0; i < 4; ++i)
        panels += (i > 0 ? "," : "") + (R"({"panelID":)" + std::to_string(i + 1)) +
                  R"(,"centroidX":)" + std::to_string((2 * i + 1) * display.width / 8) +
                  R"(,"centroidY":)" + std::to_string(display.height / 2) + "}";
    // Integers in the document are signed: pass the identifier's 32 bits as a signed integer.
    return R"({"displayID":)" + std::to_string(static_cast<std::int32_t>(display.id)) +
           R"(,"mode":0,"devices":[{"ip":")" + address +
           R"(","controlVersion":2,"shapeType":0,"scaleFactor":1.0,"panels":[)" + panels + "]}]}";
}

void showPalette() {
    static const std::regex pattern(R"(\{"R":(\d+),"G":(\d+),"B":(\d+)\})");
    std::cout << "palette:";
    for (const auto &colour : numbersIn(screenMirror::palette(), pattern)) {
        if (isatty(STDOUT_FILENO))
            std::cout << " \033[48;2;" << colour[0] << ";" << colour[1] << ";" << colour[2]
                      << "m  \033[0m";
        char hex[16];
        std::snprintf(hex, sizeof hex, " #%02lx%02lx%02lx", colour[0], colour[1], colour[2]);
        std::cout << hex;
    }
    std::cout << "\n";
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 2 || argc > 3) {
        std::cerr << "usage: mirrorScreen ADDRESS [SECONDS]\n";
        return 2;
    }
    try {
        const std::string address = argv[1];
        if (!isAddress(argv[1]))
            throw screenMirror::Error("not an IPv4 or IPv6 address: " + address);
        // A write to a closed pipe should fail, not end the process.
        std::signal(SIGPIPE, SIG_IGN);
        const Display display = firstDisplay();

        screenMirror::Run run(configuration(display, address));
        std::cout << "mirroring display " << display.id << " onto " << address << std::endl;
        std::this_thread::sleep_for(std::chrono::seconds(argc > 2 ? std::atoi(argv[2]) : 10));
        std::cout << "sent: " << run.sent() << "\n";
        showPalette();
        if (!std::cout.flush())
            throw screenMirror::Error("standard output cannot be written");
        run.stop();
        return 0;
    } catch (const screenMirror::Error &error) {
        std::cerr << "mirrorScreen: " << error.what() << "\n";
        return 1;
    }
}
