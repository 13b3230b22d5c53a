#include "tools/mirrorctl/doctor/xChecks.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/shm.h>

namespace mirrorctl {

static bool hasExtension(const XServer &server, const std::string &name) {
    const XReply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
        server.get(),
        xcb_query_extension(server.get(), static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    return reply && reply->present;
}

// Sessions

bool isWaylandSession() {
    const char *socket = std::getenv("WAYLAND_DISPLAY");
    const char *type = std::getenv("XDG_SESSION_TYPE");
    return (socket && *socket) || (type && std::string(type) == "wayland");
}

// The name of an output that only X servers in Wayland sessions have; empty when there is none.
static std::string waylandOutput(const XServer &server) {
    const XReply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            server.get(), xcb_randr_get_screen_resources_current(server.get(), server.root().root),
            nullptr));
    if (!resources)
        return {};
    const auto *outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    const int count = xcb_randr_get_screen_resources_current_outputs_length(resources.get());
    for (int i = 0; i < count; ++i) {
        const XReply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            server.get(), xcb_randr_get_output_info(server.get(), outputs[i], XCB_CURRENT_TIME),
            nullptr));
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

enum class Reading { done, refused, nothingThere, gone };

// Reads one pixel of the screen.
static Reading readPixel(const XServer &server) {
    xcb_generic_error_t *answer = nullptr;
    const XReply<xcb_get_image_reply_t> image(xcb_get_image_reply(
        server.get(),
        xcb_get_image(server.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, server.root().root, 0, 0, 1, 1, ~0u),
        &answer));
    const XReply<xcb_generic_error_t> error(answer);
    if (image)
        return Reading::done;
    if (!error)
        return Reading::gone;
    return error->error_code == XCB_ACCESS ? Reading::refused : Reading::nothingThere;
}

static Check examineSession(const XServer &server, Reading reading) {
    const std::string output = hasExtension(server, "RANDR") ? waylandOutput(server) : "";
    const bool isWaylands = !output.empty() || hasExtension(server, "XWAYLAND");
    if (!isWaylands && isWaylandSession())
        return {Verdict::unsure, "session",
                "this is a Wayland session, but the X server is no part of it; what the X server "
                "shows is mirrored, and nothing of the session",
                "log in to an X11 session to mirror all that is on the screen"};
    if (!isWaylands)
        return {Verdict::good, "session", "a session of the X server's own"};

    const std::string session =
        isWaylandSession() ? "this is a Wayland session"
                           : "the X server belongs to a Wayland session on the machine that it "
                             "runs on" +
                                 (output.empty() ? "" : ", as its output " + output + " shows");
    const std::string remedy =
        isWaylandSession()
            ? "log out, and choose an X11 session where you log in, to mirror what is on the screen"
            : "choose an X11 session when you log in at that machine's screen; over the network "
              "nothing can be done";
    if (reading == Reading::done)
        return {Verdict::unsure, "session",
                session + "; the X server shows X programs only, and black where other windows are",
                remedy};
    return {Verdict::bad, "session",
            session +
                "; the X server has no picture of the screen, only of the windows of X programs",
            remedy, ExitStatus::captureRefused};
}

// The screen

static const xcb_visualtype_t *rootVisual(const XServer &server) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&server.root()); depths.rem > 0;
         xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == server.root().root_visual)
                return visuals.data;
    return nullptr;
}

static int bitsPerPixel(const XServer &server) {
    for (auto formats = xcb_setup_pixmap_formats_iterator(xcb_get_setup(server.get()));
         formats.rem > 0; xcb_format_next(&formats))
        if (formats.data->depth == server.root().root_depth)
            return formats.data->bits_per_pixel;
    return 0;
}

static Check examineScreen(const XServer &server, Reading reading) {
    if (reading == Reading::gone)
        return {Verdict::bad, "screen", "the X server went away when it was asked for a pixel",
                "is the server still running? Its log tells why not", ExitStatus::displayMissing};
    if (reading == Reading::refused)
        return {Verdict::bad, "screen",
                "the X server does not trust this connection, and so refuses to show the screen "
                "and hides its extensions; ssh -X makes such connections",
                "use ssh -Y in place of ssh -X, or run this in the session itself, with its own "
                "key",
                ExitStatus::captureRefused};
    if (reading == Reading::nothingThere)
        return {Verdict::bad, "screen", "the X server has no picture of it",
                "use an X server that shows the screen itself", ExitStatus::captureRefused};
    const xcb_visualtype_t *visual = rootVisual(server);
    const bool hasTable = !visual || visual->_class != XCB_VISUAL_CLASS_TRUE_COLOR;
    const int bits = bitsPerPixel(server);
    const std::string format = std::to_string(bits) + " bits a pixel";
    if (hasTable || (bits != 16 && bits != 32))
        return {Verdict::bad, "screen",
                format + (hasTable ? ", looked up in a table of colours" : "") +
                    "; the library reads 16 or 32 bits of red, green and blue",
                "give the screen a depth of 16 or 24: DefaultDepth 24 in the configuration of "
                "Xorg, -screen 0 1280x720x24 for Xvfb, -depth 24 for Xvnc",
                ExitStatus::captureRefused};
    return {Verdict::good, "screen", "can be read, " + format};
}

// Extensions

static constexpr const char *switchOn = "switch the extension on in the X server's configuration";

static Check examineRandr(const XServer &server) {
    Check check{Verdict::good, "RANDR", "lists the displays"};
    if (!hasExtension(server, "RANDR"))
        return {Verdict::bad, "RANDR", "missing; without it there are no displays to name",
                "use an X server with RANDR 1.5 or later", ExitStatus::displayMissing};
    const XReply<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
        server.get(), xcb_randr_query_version(server.get(), 1, 5), nullptr));
    if (version && (version->major_version > 1 || version->minor_version >= 5))
        return check;
    return {Verdict::bad, "RANDR", "older than 1.5, which lists monitors",
            "use an X server with RANDR 1.5 or later", ExitStatus::displayMissing};
}

// Shares some memory, as the library does for the pixels.
static bool canShareMemory(const XServer &server) {
    const int file = memfd_create("memory to try", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, sysconf(_SC_PAGESIZE)) != 0) {
        if (file >= 0)
            close(file);
        return false;
    }
    // XCB closes the descriptor that it is given.
    const xcb_shm_seg_t segment = xcb_generate_id(server.get());
    const XReply<xcb_generic_error_t> error(xcb_request_check(
        server.get(), xcb_shm_attach_fd_checked(server.get(), segment, file, /*read_only=*/0)));
    if (error || xcb_connection_has_error(server.get()) != 0)
        return false;
    xcb_shm_detach(server.get(), segment);
    return true;
}

static Check examineSharing(const XServer &server, bool isLocal) {
    const std::string cost = "the screen is read through the connection, at several times the cost";
    if (!isLocal)
        return {Verdict::unsure, "MIT-SHM",
                "of no use, since DISPLAY names a server over the network; " + cost,
                "run this on the machine that the screen belongs to, with DISPLAY set to the "
                "server's local name, such as :0"};
    if (!hasExtension(server, "MIT-SHM"))
        return {Verdict::unsure, "MIT-SHM", "missing; " + cost, switchOn};
    const XReply<xcb_shm_query_version_reply_t> version(
        xcb_shm_query_version_reply(server.get(), xcb_shm_query_version(server.get()), nullptr));
    if (!version || (version->major_version == 1 && version->minor_version < 2))
        return {Verdict::unsure, "MIT-SHM", "older than 1.2, which takes descriptors; " + cost,
                "use an X server with MIT-SHM 1.2 or later"};
    if (!canShareMemory(server))
        return {Verdict::unsure, "MIT-SHM",
                "there, but memory cannot be shared, as when a proxy stands between this program "
                "and the server; " +
                    cost,
                "set DISPLAY to the name of the server itself, and run this outside of containers "
                "that keep it from sharing memory"};
    return {Verdict::good, "MIT-SHM", "the screen is read through shared memory"};
}

static Check examineNeeded(const XServer &server, const char *name, const std::string &use) {
    if (hasExtension(server, name))
        return {Verdict::good, name, use};
    return {Verdict::bad, name,
            "missing; without DAMAGE and XFIXES, which tell of changes, nothing is captured",
            switchOn, ExitStatus::captureRefused};
}

std::vector<Check> examineX(const XServer &server, bool isLocal) {
    const Reading reading = readPixel(server);
    std::vector<Check> checks = {examineSession(server, reading)};
    // The session is the reason then, and has been told.
    if (checks.front().verdict != Verdict::bad)
        checks.push_back(examineScreen(server, reading));
    if (reading == Reading::refused || reading == Reading::gone)
        return checks;
    checks.push_back(examineRandr(server));
    checks.push_back(examineSharing(server, isLocal));
    checks.push_back(examineNeeded(server, "DAMAGE", "a still screen costs nothing"));
    checks.push_back(examineNeeded(server, "XFIXES", "changed regions are told apart"));
    return checks;
}

} // namespace mirrorctl
