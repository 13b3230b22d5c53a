#include "tools/mirrorctl/doctor/doctor.h"

#include "platform/objects/signals.h"
#include "platform/x11/handshake.h"
#include "platform/x11/pixelMemory.h"

#include <cstdlib>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/shm.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>

namespace mirrorctl {

using platform::x11::Answer;
using platform::x11::Connection;
using platform::x11::Handshake;
using platform::x11::PixelMemory;
using platform::x11::Reply;

// Judged by the session's environment variables; says nothing about the X server.
static bool isWaylandSession() {
    const char *socket = std::getenv("WAYLAND_DISPLAY");
    const char *type = std::getenv("XDG_SESSION_TYPE");
    return (socket && *socket) || (type && std::string(type) == "wayland");
}

// Where the X server is asked although this is a Wayland session.
static constexpr const char *mirrorSession =
    "to mirror the session, set WAYLAND_DISPLAY to the name of its compositor, such as wayland-0, "
    "and do not set MIRROR_DISPLAY_SERVER to x11";

static std::string displayVariable() {
    const char *value = std::getenv("DISPLAY");
    return value ? value : "";
}

static bool namesServer(const std::string &display) {
    char *host = nullptr;
    int number = 0;
    const bool isName = xcb_parse_display(display.c_str(), &host, &number, nullptr) != 0;
    std::free(host);
    return isName;
}

static Check missing(const std::string &finding, const std::string &remedy) {
    return {Verdict::Bad, "X server", finding, remedy, ExitStatus::DisplayMissing};
}

static Check refusal(const std::string &name, const Handshake &handshake) {
    const std::string finding = name + " does not let this user in" +
                                (handshake.reason.empty() ? "" : ", and says: " + handshake.reason);
    if (handshake.reason.starts_with("Maximum number of clients"))
        return missing(finding, "close some of the programs that use it");
    return missing(finding, handshake.hadKey
                                ? "the key file has an old or another server's key for it; set "
                                  "XAUTHORITY to the key file of the session that it belongs to"
                                : "the key file has no key for it; run this as the user whose "
                                  "session it is, or set XAUTHORITY to that session's key file");
}

// Why no X server can be queried.
static Check explain(const Handshake &handshake, const std::string &why) {
    const std::string display = displayVariable();
    if (display.empty() && isWaylandSession())
        return missing("the variable DISPLAY is not set; this is a Wayland session, but X11 is "
                       "asked" +
                           why,
                       mirrorSession);
    if (display.empty())
        return missing("the variable DISPLAY is not set, so there is none to ask",
                       "run this in the desktop session, or set DISPLAY to its server's name, "
                       "such as :0, and XAUTHORITY to its key file");
    const std::string name = "\"" + display + "\"";
    if (!namesServer(display))
        return missing(name + ", the value of DISPLAY, is not a server's name",
                       "set DISPLAY to the name of the session's server, such as :0");
    switch (handshake.answer) {
    case Answer::NoServer:
        return missing("the server that DISPLAY names, " + name + ", is not there",
                       "run this in the desktop session, or set DISPLAY to its server's name, "
                       "such as :0");
    case Answer::Silence:
        return missing(name + " does not answer", "the server hangs, or the connection to it is "
                                                  "interrupted: look at its log, or log out and "
                                                  "in again");
    case Answer::HangUp:
        return missing(name + " accepts the connection and closes it without an answer",
                       "if DISPLAY was set by ssh, log in with it again, from a session whose "
                       "screen is still there; otherwise look at the server's log");
    case Answer::Refusal:
        return refusal(name, handshake);
    default:
        return missing(name + " answered once, but no longer",
                       "is the server still running? Its log says what happened to it");
    }
}

// The name of an output that only X servers in Wayland sessions have; empty when there is none.
static std::string waylandOutput(Connection &connection) {
    const Reply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            connection.get(),
            xcb_randr_get_screen_resources_current(connection.get(), connection.root()), nullptr));
    if (!resources)
        return {};
    const auto *outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    const int count = xcb_randr_get_screen_resources_current_outputs_length(resources.get());
    for (int i = 0; i < count; ++i) {
        const Reply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            connection.get(),
            xcb_randr_get_output_info(connection.get(), outputs[i], XCB_CURRENT_TIME), nullptr));
        if (!info)
            continue;
        std::string name(
            reinterpret_cast<const char *>(xcb_randr_get_output_info_name(info.get())),
            static_cast<std::size_t>(xcb_randr_get_output_info_name_length(info.get())));
        if (name.starts_with("XWAYLAND"))
            return name;
    }
    return {};
}

enum class Reading { Done, Refused, NothingThere, Gone };

static Reading readPixel(Connection &connection) {
    xcb_generic_error_t *answer = nullptr;
    const Reply<xcb_get_image_reply_t> image(
        xcb_get_image_reply(connection.get(),
                            xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP,
                                          connection.root(), 0, 0, 1, 1, ~0u),
                            &answer));
    connection.extendWatch();
    const Reply<xcb_generic_error_t> error(answer);
    if (image)
        return Reading::Done;
    if (!error)
        return Reading::Gone;
    return error->error_code == XCB_ACCESS ? Reading::Refused : Reading::NothingThere;
}

static Check examineSession(Connection &connection, Reading reading, const std::string &why) {
    static xcb_extension_t xwayland = {"XWAYLAND", 0};
    const std::string output = connection.has(xcb_randr_id) ? waylandOutput(connection) : "";
    const bool isWaylands = !output.empty() || connection.has(xwayland);
    if (!isWaylands && isWaylandSession())
        return {Verdict::Unsure, "session",
                "this is a Wayland session, but the X server is no part of it; what the X server "
                "shows is mirrored, and nothing of the session",
                mirrorSession};
    if (!isWaylands)
        return {Verdict::Good, "session", "X11" + why};

    const std::string session =
        isWaylandSession() ? "this is a Wayland session"
                           : "the X server belongs to a Wayland session on the machine that it "
                             "runs on" +
                                 (output.empty() ? "" : ", as its output " + output + " shows");
    const std::string remedy =
        isWaylandSession()
            ? mirrorSession
            : "choose an X11 session when you log in at that machine's screen; over the network "
              "nothing can be done";
    if (reading == Reading::Done)
        return {Verdict::Unsure, "session",
                session + "; the X server shows X programs only, and black where other windows are",
                remedy};
    return {Verdict::Bad, "session",
            session +
                "; the X server has no picture of the screen, only of the windows of X programs",
            remedy, ExitStatus::CaptureRefused};
}

static Check examineScreen(Connection &connection, Reading reading) {
    if (reading == Reading::Gone)
        return {Verdict::Bad, "screen", "the X server went away when it was asked for a pixel",
                "is the server still running? Its log says why not", ExitStatus::DisplayMissing};
    if (reading == Reading::Refused)
        return {Verdict::Bad, "screen",
                "the X server does not trust this connection, and so refuses to show the screen "
                "and hides its extensions; ssh -X makes such connections",
                "use ssh -Y in place of ssh -X, or run this in the session itself, with its own "
                "key",
                ExitStatus::CaptureRefused};
    if (reading == Reading::NothingThere)
        return {Verdict::Bad, "screen", "the X server has no picture of it",
                "use an X server that shows the screen itself", ExitStatus::CaptureRefused};
    const auto *visual = platform::x11::rootVisual(connection.screen());
    const bool hasTable = !visual || visual->_class != XCB_VISUAL_CLASS_TRUE_COLOR;
    const auto *stored = platform::x11::formatOfDepth(xcb_get_setup(connection.get()),
                                                      connection.screen().root_depth);
    const int bits = stored ? stored->bits_per_pixel : 0;
    const std::string format = std::to_string(bits) + " bits a pixel";
    if (hasTable || (bits != 16 && bits != 32))
        return {Verdict::Bad, "screen",
                format + (hasTable ? ", looked up in a table of colours" : "") +
                    "; the library reads 16 or 32 bits of red, green and blue",
                "give the screen a depth of 16 or 24: DefaultDepth 24 in the configuration of "
                "Xorg, -screen 0 1280x720x24 for Xvfb, -depth 24 for Xvnc",
                ExitStatus::CaptureRefused};
    return {Verdict::Good, "screen", "can be read, " + format};
}

static constexpr const char *switchOn = "switch the extension on in the X server's configuration";

static Check examineRandr(Connection &connection) {
    const bool isThere = connection.has(xcb_randr_id);
    const Reply<xcb_randr_query_version_reply_t> version(
        isThere ? xcb_randr_query_version_reply(
                      connection.get(), xcb_randr_query_version(connection.get(), 1, 5), nullptr)
                : nullptr);
    if (version && (version->major_version > 1 || version->minor_version >= 5))
        return {Verdict::Good, "RANDR", "lists the displays"};
    return {Verdict::Bad, "RANDR",
            isThere ? "older than 1.5, which lists monitors"
                    : "missing; without it there are no displays to name",
            "use an X server with RANDR 1.5 or later", ExitStatus::DisplayMissing};
}

static Check examineSharing(Connection &connection) {
    const std::string cost = "the screen is read through the connection, at several times the cost";
    if (!connection.isLocal())
        return {Verdict::Unsure, "MIT-SHM",
                "of no use, since DISPLAY names a server over the network; " + cost,
                "run this on the machine that the screen belongs to, with DISPLAY set to the "
                "server's local name, such as :0"};
    if (!connection.has(xcb_shm_id))
        return {Verdict::Unsure, "MIT-SHM", "missing; " + cost, switchOn};
    const Reply<xcb_shm_query_version_reply_t> version(xcb_shm_query_version_reply(
        connection.get(), xcb_shm_query_version(connection.get()), nullptr));
    if (!version || (version->major_version == 1 && version->minor_version < 2))
        return {Verdict::Unsure, "MIT-SHM", "older than 1.2, which takes descriptors; " + cost,
                "use an X server with MIT-SHM 1.2 or later"};
    if (!PixelMemory(connection, 1, PixelMemory::Sharing::WhenPossible).isShared())
        return {Verdict::Unsure, "MIT-SHM",
                "there, but memory cannot be shared, as when a proxy stands between this program "
                "and the server; " +
                    cost,
                "set DISPLAY to the name of the server itself, and run this outside of containers "
                "that keep it from sharing memory"};
    return {Verdict::Good, "MIT-SHM", "the screen is read through shared memory"};
}

static Check examineNeeded(Connection &connection, xcb_extension_t &extension,
                           const std::string &use) {
    if (connection.has(extension))
        return {Verdict::Good, extension.name, use};
    return {Verdict::Bad, extension.name,
            "missing; without DAMAGE and XFIXES, which tell of changes, nothing is captured",
            switchOn, ExitStatus::CaptureRefused};
}

static Check describe(const Connection &connection) {
    const xcb_setup_t *setup = xcb_get_setup(connection.get());
    const xcb_screen_t &screen = connection.screen();
    return {Verdict::Good, "X server",
            "\"" + displayVariable() + "\", " +
                std::string(xcb_setup_vendor(setup),
                            static_cast<std::size_t>(xcb_setup_vendor_length(setup))) +
                ", release " + std::to_string(setup->release_number) + ", root " +
                std::to_string(screen.width_in_pixels) + " x " +
                std::to_string(screen.height_in_pixels) + ", depth " +
                std::to_string(screen.root_depth)};
}

SystemChecks examineX11(const std::string &why) {
    constexpr auto patience = std::chrono::seconds(4);
    const platform::SigpipeGuard guard;
    auto handshake =
        std::make_shared<Handshake>(platform::x11::shakeHands(platform::Clock::now() + patience));
    const auto connection = handshake->answer == Answer::Welcome ? Connection::open() : nullptr;
    if (!connection)
        return {{explain(*handshake, why)}, handshake};
    const Reading reading = readPixel(*connection);
    std::vector<Check> checks = {describe(*connection), examineSession(*connection, reading, why)};
    // A bad session explains a bad screen.
    if (checks.back().verdict != Verdict::Bad)
        checks.push_back(examineScreen(*connection, reading));
    if (reading != Reading::Refused && reading != Reading::Gone) {
        checks.push_back(examineRandr(*connection));
        checks.push_back(examineSharing(*connection));
        checks.push_back(examineNeeded(*connection, xcb_damage_id, "a still screen costs nothing"));
        checks.push_back(
            examineNeeded(*connection, xcb_xfixes_id, "changed regions are told apart"));
    }
    return {checks, handshake};
}

} // namespace mirrorctl
