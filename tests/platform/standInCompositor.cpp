#include "tests/platform/standInCompositor.h"

#include "protocols/wlr-screencopy-unstable-v1-server-protocol.h"
#include "protocols/xdg-output-unstable-v1-server-protocol.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <future>
#include <mutex>
#include <poll.h>
#include <set>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <wayland-server.h>

namespace test {

using Step = StandInPlan::Step;
using Copies = StandInPlan::Copies;

struct StandInCompositor::Server {
    Server(StandInPlan plan, const std::string &path);
    ~Server();
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    // Runs a function on the server's thread and waits for its end.
    void carryOut(const std::function<void()> &task);

    // Whether a client gets no further than this step.
    bool ends(wl_client *client, Step step) const;
    void addOutput();
    void offer(wl_client *client, wl_resource *manager, std::uint32_t id);
    void copy(wl_resource *frame, wl_resource *buffer, bool waits);
    void finish(wl_resource *frame, wl_resource *buffer);

    StandInPlan plan;
    wl_display *display = nullptr;
    wl_global *output = nullptr;
    std::vector<wl_resource *> outputs; // bound by clients
    struct Waiting {
        wl_resource *frame;
        wl_resource *buffer;
    };
    std::vector<Waiting> waiting;
    bool damaged = true;
    std::chrono::steady_clock::time_point lastCopy{};
    std::atomic<int> made = 0;
    std::set<wl_resource *> current; // frames offered since the last turn
    std::atomic<int> outdated = 0;

    int wakeUp = eventfd(0, EFD_CLOEXEC);
    std::mutex mutex;
    std::vector<std::packaged_task<void()>> tasks; // under the mutex
    bool over = false;
    std::thread thread;
};

namespace {

using Server = StandInCompositor::Server;

Server &serverOf(wl_resource *resource) {
    return *static_cast<Server *>(wl_resource_get_user_data(resource));
}

void destroy(wl_client *, wl_resource *resource) {
    wl_resource_destroy(resource);
}

void describe(wl_resource *output, const StandInPlan &plan) {
    wl_output_send_geometry(output, 0, 0, 0, 0, 0, "stand-in", "stand-in", plan.transform);
    wl_output_send_mode(output, WL_OUTPUT_MODE_CURRENT, 4, 3, 60000);
    if (plan.hasName && wl_resource_get_version(output) >= WL_OUTPUT_NAME_SINCE_VERSION)
        wl_output_send_name(output, "HEADLESS-1");
}

void bindOutput(wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
    auto &server = *static_cast<Server *>(data);
    if (server.ends(client, Step::Naming))
        return;
    static const struct wl_output_interface requests = {.release = destroy};
    wl_resource *output =
        wl_resource_create(client, &wl_output_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(output, &requests, data, [](wl_resource *gone) {
        std::erase(serverOf(gone).outputs, gone);
    });
    server.outputs.push_back(output);
    describe(output, server.plan);
    wl_output_send_done(output);
}

void bindDetails(wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
    static const struct zxdg_output_v1_interface outputRequests = {.destroy = destroy};
    static const struct zxdg_output_manager_v1_interface requests = {
        .destroy = destroy,
        .get_xdg_output = [](wl_client *user, wl_resource *manager, std::uint32_t newId,
                             wl_resource *output) {
            Server &server = serverOf(manager);
            wl_resource *details = wl_resource_create(user, &zxdg_output_v1_interface,
                                                      wl_resource_get_version(manager), newId);
            wl_resource_set_implementation(details, &outputRequests, &server, nullptr);
            if (server.plan.hasName)
                zxdg_output_v1_send_name(details, "HEADLESS-1");
            wl_output_send_done(output);
        }};
    wl_resource *manager = wl_resource_create(client, &zxdg_output_manager_v1_interface,
                                              static_cast<int>(version), id);
    wl_resource_set_implementation(manager, &requests, data, nullptr);
}

void bindCopies(wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
    static const struct zwlr_screencopy_manager_v1_interface requests = {
        .capture_output = [](wl_client *user, wl_resource *manager, std::uint32_t newId,
                             std::int32_t,
                             wl_resource *) { serverOf(manager).offer(user, manager, newId); },
        .capture_output_region = nullptr,
        .destroy = destroy};
    wl_resource *manager = wl_resource_create(client, &zwlr_screencopy_manager_v1_interface,
                                              static_cast<int>(version), id);
    wl_resource_set_implementation(manager, &requests, data, nullptr);
}

// Listens on a socket of this path.
int listenOn(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        listen(fd, 8) != 0)
        throw std::runtime_error("no socket for the stand-in");
    return fd;
}

} // namespace

StandInCompositor::Server::Server(StandInPlan plan_, const std::string &path)
    : plan(std::move(plan_)), display(wl_display_create()) {
    if (!plan.paint)
        plan.paint = [](std::uint8_t *pixels, std::size_t bytes) {
            for (std::size_t i = 0; i < bytes; ++i)
                pixels[i] = static_cast<std::uint8_t>(i);
        };
    wl_display_add_socket_fd(display, listenOn(path));
    if (plan.hasMemory)
        wl_display_init_shm(display);
    for (const StandInPlan::Offer &each : plan.offers)
        if (plan.hasMemory && each.format > 1)
            wl_display_add_shm_format(display, each.format);
    if (plan.copyVersion > 0)
        wl_global_create(display, &zwlr_screencopy_manager_v1_interface, plan.copyVersion, this,
                         bindCopies);
    addOutput();
    wl_global_create(display, &zxdg_output_manager_v1_interface, 3, this, bindDetails);
    wl_event_source *telling = wl_event_loop_add_fd(
        wl_display_get_event_loop(display), wakeUp, WL_EVENT_READABLE,
        [](int fd, std::uint32_t, void *data) {
            auto &own = *static_cast<Server *>(data);
            std::uint64_t count = 0;
            [[maybe_unused]] const ssize_t size = read(fd, &count, sizeof count);
            const std::lock_guard lock(own.mutex);
            for (auto &task : own.tasks)
                task();
            own.tasks.clear();
            return 0;
        },
        this);
    if (plan.hangsUpAt == Step::Connecting || plan.silentFrom == Step::Connecting) {
        static wl_listener onClient;
        static Server *server;
        server = this;
        onClient.notify = [](wl_listener *, void *client) {
            server->ends(static_cast<wl_client *>(client), Step::Connecting);
        };
        wl_display_add_client_created_listener(display, &onClient);
    }
    thread = std::thread([this, telling] {
        wl_event_loop *loop = wl_display_get_event_loop(display);
        while (!over) {
            wl_display_flush_clients(display);
            wl_event_loop_dispatch(loop, -1);
        }
        wl_event_source_remove(telling);
        wl_display_destroy_clients(display);
        wl_display_destroy(display);
    });
}

StandInCompositor::Server::~Server() {
    carryOut([this] { over = true; });
    thread.join();
    close(wakeUp);
}

void StandInCompositor::Server::carryOut(const std::function<void()> &task) {
    std::packaged_task<void()> packaged(task);
    std::future<void> end = packaged.get_future();
    {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(packaged));
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
    end.wait();
}

// A silent server's thread sleeps until it is told something.
bool StandInCompositor::Server::ends(wl_client *client, Step step) const {
    if (plan.hangsUpAt == step)
        shutdown(wl_client_get_fd(client), SHUT_RDWR);
    if (plan.silentFrom == step) {
        pollfd told{wakeUp, POLLIN, 0};
        poll(&told, 1, -1);
    }
    return plan.hangsUpAt == step || plan.silentFrom == step;
}

void StandInCompositor::Server::addOutput() {
    output = wl_global_create(display, &wl_output_interface, plan.outputVersion, this, bindOutput);
}

void StandInCompositor::Server::offer(wl_client *client, wl_resource *manager, std::uint32_t id) {
    static const struct zwlr_screencopy_frame_v1_interface requests = {
        .copy = [](wl_client *, wl_resource *frame,
                   wl_resource *buffer) { serverOf(frame).copy(frame, buffer, false); },
        .destroy = destroy,
        .copy_with_damage = [](wl_client *, wl_resource *frame,
                               wl_resource *buffer) { serverOf(frame).copy(frame, buffer, true); }};
    wl_resource *frame = wl_resource_create(client, &zwlr_screencopy_frame_v1_interface,
                                            wl_resource_get_version(manager), id);
    wl_resource_set_implementation(frame, &requests, this, [](wl_resource *gone) {
        serverOf(gone).current.erase(gone);
        std::erase_if(serverOf(gone).waiting,
                      [gone](const Waiting &each) { return each.frame == gone; });
    });
    current.insert(frame);
    if (ends(client, Step::Offering))
        return;
    if (plan.copies == Copies::WithoutRequest)
        zwlr_screencopy_frame_v1_send_ready(frame, 0, 0, 0);
    for (const StandInPlan::Offer &each : plan.offers)
        zwlr_screencopy_frame_v1_send_buffer(frame, each.format, each.width, each.height,
                                             each.stride);
    zwlr_screencopy_frame_v1_send_buffer_done(frame);
}

void StandInCompositor::Server::copy(wl_resource *frame, wl_resource *buffer, bool waits) {
    if (ends(wl_resource_get_client(frame), Step::Copying))
        return;
    outdated += current.contains(frame) ? 0 : 1;
    if (plan.copies == Copies::Refused) {
        ++made;
        zwlr_screencopy_frame_v1_send_failed(frame);
        return;
    }
    constexpr auto frameTime = std::chrono::milliseconds(16);
    if (plan.copies == Copies::GivesScreenAway &&
        std::chrono::steady_clock::now() - lastCopy > frameTime)
        damaged = true;
    if (plan.copies == Copies::Never || (waits && !damaged) ||
        (waits && plan.copies == Copies::OnlyAtOnce && made == 0)) {
        waiting.push_back({frame, buffer});
        return;
    }
    finish(frame, buffer);
}

void StandInCompositor::Server::finish(wl_resource *frame, wl_resource *buffer) {
    wl_shm_buffer *memory = wl_shm_buffer_get(buffer);
    wl_shm_buffer_begin_access(memory);
    plan.paint(static_cast<std::uint8_t *>(wl_shm_buffer_get_data(memory)),
               static_cast<std::size_t>(wl_shm_buffer_get_stride(memory)) *
                   static_cast<std::size_t>(wl_shm_buffer_get_height(memory)));
    wl_shm_buffer_end_access(memory);
    damaged = false;
    lastCopy = std::chrono::steady_clock::now();
    ++made;
    zwlr_screencopy_frame_v1_send_flags(frame, plan.flags);
    zwlr_screencopy_frame_v1_send_damage(frame, 0, 0, 0xffffffff, 0xffffffff);
    zwlr_screencopy_frame_v1_send_ready(frame, 0, 0, 0);
}

StandInCompositor::StandInCompositor(const StandInPlan &plan)
    : server(std::make_unique<Server>(plan, folder.file("stand-in"))) {
    setenv("WAYLAND_DISPLAY", folder.file("stand-in").c_str(), 1);
    unsetenv("DISPLAY");
}

StandInCompositor::~StandInCompositor() = default;

void StandInCompositor::unplug() {
    server->carryOut([this] {
        wl_global_destroy(server->output);
        server->output = nullptr;
    });
}

void StandInCompositor::plugIn() {
    server->carryOut([this] { server->addOutput(); });
}

void StandInCompositor::turn(std::int32_t transform, bool completely) {
    server->carryOut([=, this] {
        server->plan.transform = transform;
        server->current.clear();
        for (wl_resource *each : server->outputs) {
            describe(each, server->plan);
            if (completely)
                wl_output_send_done(each);
        }
    });
}

void StandInCompositor::draw() {
    server->carryOut([this] {
        server->damaged = true;
        for (const auto &[frame, buffer] : std::exchange(server->waiting, {}))
            server->finish(frame, buffer);
    });
}

int StandInCompositor::copies() const {
    return server->made;
}

int StandInCompositor::outdatedCopies() const {
    return server->outdated;
}

} // namespace test
