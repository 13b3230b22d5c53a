#include "tools/panelwall/pngFile.h"
#include "tools/panelwall/steps.h"

#include <exception>
#include <iostream>

using namespace panelwall;

static int runProgram(const Options &options) {
    if (!options.comparedPaths.empty())
        return compareFiles(options.comparedPaths[0], options.comparedPaths[1]);
    if (options.snapshotPath) {
        const std::string &path = *options.snapshotPath;
        if (const auto reason = findObstacle(path); !reason.empty())
            refuse(exitFile, path, "a picture cannot be written here: " + reason);
    }
    return options.replayPath ? replay(options) : runWall(options);
}

int main(int argc, char **argv) {
    try {
        return runProgram(parseOptions(argc, argv));
    } catch (const Exit &end) {
        return end.status;
    } catch (const std::exception &error) {
        std::cerr << "panelwall: " << error.what() << "\n";
        return exitOther;
    }
}
