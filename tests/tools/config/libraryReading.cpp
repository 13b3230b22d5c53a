#include "tests/tools/config/libraryReading.h"

#include <cassert>
#include <csignal>
#include <fcntl.h>
#include <rapidjson/document.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef NDEBUG
#error "This file measures the JSON library's assertions."
#endif

namespace test {

static bool readAll(const char *json) {
    rapidjson::Document document;
    document.Parse(json);
    if (document.HasParseError())
        return false;
    // Lets no compiler drop a read.
    volatile double sink = document["displayID"].GetInt();
    sink = document["mode"].GetInt();
    const auto &devices = document["devices"];
    assert(devices.IsArray());
    for (rapidjson::SizeType i = 0; i < devices.Size(); ++i) {
        const auto &device = devices[i];
        const auto &panels = device["panels"];
        assert(panels.IsArray());
        const auto panelCount = panels.Size();
        sink = device["scaleFactor"].GetDouble();
        sink = device["shapeType"].GetInt();
        for (rapidjson::SizeType j = 0; j < panelCount; ++j) {
            const auto &panel = panels[j];
            sink = panel["panelID"].GetInt();
            sink = panel["centroidX"].GetInt();
            sink = panel["centroidY"].GetInt();
        }
        sink = static_cast<double>(std::string(device["ip"].GetString()).size());
        sink = device["controlVersion"].GetInt();
    }
    static_cast<void>(sink);
    return true;
}

// In the child: an assertion is expected, so it leaves neither a message nor a core file.
[[noreturn]] static void readAndExit(const std::string &text) {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    std::signal(SIGABRT, SIG_DFL);
    _exit(readAll(text.c_str()) ? 0 : 1);
}

bool libraryReads(const std::string &text) {
    const pid_t child = fork();
    if (child < 0)
        throw std::runtime_error("cannot fork");
    if (child == 0)
        readAndExit(text);
    int status = 0;
    if (waitpid(child, &status, 0) != child)
        throw std::runtime_error("cannot wait for the child");
    if (WIFEXITED(status) && WEXITSTATUS(status) <= 1)
        return WEXITSTATUS(status) == 0;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT)
        return false;
    throw std::runtime_error("the child ended in a way of its own");
}

} // namespace test
