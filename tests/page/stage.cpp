// A virtual screen for tests that are not written in C++. Prints its display name, then executes
// the drawing commands on standard input, and answers each line with "done" once it is on the
// screen. Ends at the end of the input.
//
//     fill RRGGBB
//     rect X Y WIDTH HEIGHT RRGGBB
#include "tests/support/virtualScreen.h"

#include <iostream>
#include <sstream>

int main(int argc, char **argv) {
    if (argc != 3) {
        std::cerr << "usage: stage WIDTH HEIGHT\n";
        return 2;
    }
    try {
        test::VirtualScreen screen(std::stoi(argv[1]), std::stoi(argv[2]));
        std::cout << screen.display() << std::endl;
        for (std::string line; std::getline(std::cin, line);) {
            std::istringstream words(line);
            std::string what;
            int place[4] = {};
            std::uint32_t colour = 0;
            words >> what;
            if (what == "rect")
                words >> place[0] >> place[1] >> place[2] >> place[3];
            words >> std::hex >> colour;
            if (!words || (what != "fill" && what != "rect")) {
                std::cerr << "stage: cannot read: " << line << "\n";
                return 2;
            }
            if (what == "fill")
                screen.fill(colour);
            else
                screen.fillRect(place[0], place[1], place[2], place[3], colour);
            std::cout << "done" << std::endl;
        }
        return 0;
    } catch (const std::exception &error) {
        std::cerr << "stage: " << error.what() << "\n";
        return 1;
    }
}
