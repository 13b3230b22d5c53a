#include "tests/support/swayServer.h"

#include "tests/support/xServer.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace test {

namespace {

constexpr unsigned nobody = 65534;

bool isInstalled(const std::string &program) {
    return shell("command -v " + program).status == 0;
}

} // namespace

SwayServer::SwayServer(int width, int height, const std::vector<std::string> &lines) {
    if (!isInstalled("sway"))
        skipTest("sway is not installed");
    std::string text = "output HEADLESS-1 resolution " + std::to_string(width) + "x" +
                       std::to_string(height) +
                       "\nxwayland disable\ndefault_border none\nseat * hide_cursor 1\n";
    for (const std::string &line : lines)
        text += line + "\n";
    // Carried out when its sockets listen and its outputs are there.
    text += "exec echo ready $SWAYSOCK\n";
    folder.write("config", text);
    if (geteuid() == 0 && chown(folder.file("").c_str(), nobody, nobody) != 0)
        throw std::runtime_error("no folder for sway");
}

void SwayServer::start() {
    std::vector<std::string> command = {"sway", "-c", folder.file("config")};
    if (geteuid() == 0)
        command.insert(command.begin(),
                       {"setpriv", "--reuid=" + std::to_string(nobody),
                        "--regid=" + std::to_string(nobody), "--clear-groups", "--pdeathsig=keep"});
    // Its standard error is not needed.
    command.insert(command.begin(), {"/bin/sh", "-c", "exec \"$@\" 2>/dev/null", "sh"});
    server.emplace(command, LaunchOptions{.variables = {{"XDG_RUNTIME_DIR", folder.file(".")},
                                                        {"HOME", folder.file(".")},
                                                        {"XDG_CONFIG_HOME", ""},
                                                        {"WLR_BACKENDS", "headless"},
                                                        {"WLR_HEADLESS_OUTPUTS", "1"},
                                                        {"WLR_LIBINPUT_NO_DEVICES", "1"},
                                                        {"WLR_RENDERER", "pixman"},
                                                        {"DBUS_SESSION_BUS_ADDRESS", ""},
                                                        {"SWAYSOCK", folder.file("control")},
                                                        {"WAYLAND_DISPLAY", ""},
                                                        {"WAYLAND_SOCKET", ""},
                                                        {"DISPLAY", ""}}});
    server->waitFor("ready");
}

SwayServer::~SwayServer() = default;

// A killed server leaves its socket behind.
void SwayServer::kill() {
    server.reset();
    std::filesystem::remove(socket());
}

std::map<std::string, std::string> SwayServer::variables() const {
    return {{"DISPLAY", ""},
            {"SWAYSOCK", folder.file("control")},
            {"WAYLAND_DISPLAY", socket()},
            {"WAYLAND_SOCKET", ""}};
}

} // namespace test
