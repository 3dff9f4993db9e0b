#include "x11/X11Desktop.h"

#include <fcntl.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <stdexcept>

#include "platform/x11/XcbReply.h"
#include "x11/WaitUntil.h"

namespace gf::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kServerStartTimeout = 10s;
constexpr auto kWindowTimeout = 5000ms;
// openbox may leave a window mapped while it starts unmanaged; the probe window is mapped again.
constexpr auto kProbeRetry = 500ms;

// WM_SIZE_HINTS flags.
constexpr std::uint32_t kUserPosition = 1u << 0;
constexpr std::uint32_t kUserSize = 1u << 1;
constexpr std::uint32_t kMinSize = 1u << 4;
constexpr std::uint32_t kMaxSize = 1u << 5;
// _NET_MOVERESIZE_WINDOW from a tool, north-west gravity, position and size given.
constexpr std::uint32_t kMoveResizeFlags = 1 | (0xf << 8) | (2 << 12);

}  // namespace

std::unique_ptr<X11Desktop> X11Desktop::start(const Options& options, std::string* error) {
    auto desktop = std::make_unique<X11Desktop>();
    std::string directory =
        (std::filesystem::temp_directory_path() / "glimmerfold-e2e-XXXXXX").string();
    if (mkdtemp(directory.data()) == nullptr) {
        *error = "cannot create a temporary directory";
        return nullptr;
    }
    desktop->directory_ = directory;
    desktop->directoryRemover_ = std::shared_ptr<void>(nullptr, [directory](void*) {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    });
    if (!desktop->startServer(options, error)) {
        return nullptr;
    }
    if (!desktop->startWindowManager(options, error) ||
        (options.trayHost && !desktop->startTrayHost(error))) {
        *error += "\n" + desktop->logTail();
        return nullptr;
    }
    return desktop;
}

bool X11Desktop::startServer(const Options& options, std::string* error) {
    // Xvfb picks a free display and writes its number here once it takes connections.
    const std::filesystem::path numberFile = directory_ / "display";
    const int numberFd = open(numberFile.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::string screen =
        std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
    ChildProcess::Options server;
    server.arguments = {"Xvfb",      "-displayfd", std::to_string(numberFd),
                        "-screen",   "0",          screen,
                        "-nolisten", "tcp",        "-noreset"};
    server.outputFile = (directory_ / "xvfb.log").string();
    server.inheritedFd = numberFd;
    server_ = ChildProcess::start(server, error);
    close(numberFd);
    if (!server_) {
        return false;
    }
    std::string number;
    waitUntil(
        [&] {
            number = fileText(numberFile);
            return number.ends_with('\n') || !server_->isRunning();
        },
        kServerStartTimeout);
    if (!number.ends_with('\n')) {
        *error = "Xvfb did not report its display\n" + logTail();
        return false;
    }
    displayName_ = ":" + number.substr(0, number.size() - 1);
    connection_ = XcbConnection::open(displayName_.c_str(), error);
    if (!connection_) {
        return false;
    }
    input_ = std::make_unique<XTestDriver>(connection(), root());
    probe_ = std::make_unique<DesktopProbe>(connection(), root());
    return true;
}

bool X11Desktop::startSessionBus(std::string* error) {
    const std::filesystem::path socket = directory_ / "session-bus";
    const std::string address = "unix:path=" + socket.string();
    ChildProcess::Options bus;
    bus.arguments = {"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address};
    bus.outputFile = (directory_ / "session-bus.log").string();
    sessionBus_ = ChildProcess::start(bus, error);
    if (!sessionBus_) {
        return false;
    }
    if (!waitUntil([&] { return std::filesystem::exists(socket); }, kServerStartTimeout)) {
        *error = "the private session bus did not start";
        return false;
    }
    sessionBusAddress_ = address;
    return true;
}

bool X11Desktop::startWindowManager(const Options& options, std::string* error) {
    // xfwm4 and GTK clients use D-Bus: a private bus keeps them off the session running the tests.
    if (options.sessionBus && !startSessionBus(error)) {
        return false;
    }
    const WindowManager windowManager = options.windowManager;
    if (windowManager == WindowManager::none) {
        return true;
    }
    windowManager_ =
        ChildProcess::start(windowManagerProcess(windowManager, directory_, clientEnvironment(),
                                                 options.openboxDragBindings),
                            error);
    if (!windowManager_) {
        return false;
    }
    if (!waitUntilManaging()) {
        *error = std::string(nameOf(windowManager)) + " did not start managing windows";
        return false;
    }
    windowManagerKind_ = windowManager;
    return true;
}

bool X11Desktop::waitUntilManaging() {
    // openbox sets _NET_SUPPORTING_WM_CHECK before it manages windows: only a managed one tells.
    xcb_connection_t* c = connection();
    const xcb_window_t probeWindow = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, probeWindow, root(), 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const auto deadline = std::chrono::steady_clock::now() + kServerStartTimeout;
    bool managed = false;
    while (!managed && std::chrono::steady_clock::now() < deadline && windowManager_->isRunning()) {
        xcb_map_window(c, probeWindow);
        xcb_flush(c);
        managed = waitUntil([&] { return probe_->isManaged(probeWindow); }, kProbeRetry);
        if (!managed) {
            xcb_unmap_window(c, probeWindow);
        }
    }
    xcb_destroy_window(c, probeWindow);
    input_->sync();
    if (managed) {
        waitUntil([&] { return !probe_->exists(probeWindow) && !probe_->activeWindow(); }, 1000ms);
    }
    return managed;
}

void X11Desktop::killServer() {
    trayHost_.reset();
    clients_.clear();
    windowManager_.reset();
    server_->terminate(0ms);
}

std::vector<std::pair<std::string, std::string>> X11Desktop::clientEnvironment() const {
    std::vector<std::pair<std::string, std::string>> environment{{"DISPLAY", displayName_}};
    if (!sessionBusAddress_.empty()) {
        environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", sessionBusAddress_);
    }
    return environment;
}

std::string X11Desktop::logTail() const {
    std::string text;
    for (const char* log : {"xvfb.log", "window-manager.log", "trayer.log"}) {
        const std::filesystem::path file = directory_ / log;
        if (std::filesystem::exists(file)) {
            text += std::string(log) + ":\n" + lastLines(file, 10);
        }
    }
    return text;
}

void X11Desktop::waitForWindow(WindowId window, bool managed,
                               std::optional<std::pair<int, int>> framePosition,
                               const std::string& what) {
    const bool ready = waitUntil(
        [&] {
            if (managed ? !probe_->isManaged(window) : !probe_->isViewable(window)) {
                return false;
            }
            if (!framePosition) {
                return true;
            }
            const std::optional<Rect> frame = probe_->frameGeometry(window);
            return frame && frame->x == framePosition->first && frame->y == framePosition->second;
        },
        kWindowTimeout);
    if (!ready) {
        throw std::runtime_error(what + " did not appear where expected\n" + logTail());
    }
}

TestClient& X11Desktop::startClient(ChildProcess::Options options,
                                    std::optional<std::pair<int, int>> framePosition) {
    auto client = std::make_unique<TestClient>();
    const std::vector<std::string>& arguments = options.arguments;
    const auto display = clientEnvironment();
    options.environment.insert(options.environment.begin(), display.begin(), display.end());
    options.outputFile = (directory_ / (arguments.front() + ".log")).string();
    std::string error;
    client->process = ChildProcess::start(options, &error);
    if (!client->process) {
        throw std::runtime_error(error);
    }
    client->pid = client->process->pid();
    std::optional<WindowId> window;
    const bool found = waitUntil(
        [&] {
            window = probe_->findClientByPid(client->pid);
            return window.has_value() || !client->process->isRunning();
        },
        kWindowTimeout);
    if (!found || !window) {
        throw std::runtime_error(arguments.front() + " showed no window\n" +
                                 lastLines(options.outputFile, 5));
    }
    client->window = *window;
    waitForWindow(client->window, windowManagerKind_ != WindowManager::none, framePosition,
                  arguments.front());
    clients_.push_back(std::move(client));
    return *clients_.back();
}

TestClient& X11Desktop::startPlaced(const std::string& program, int x, int y, int width,
                                    int height) {
    const std::string geometry = std::to_string(width) + "x" + std::to_string(height) + "+" +
                                 std::to_string(x) + "+" + std::to_string(y);
    ChildProcess::Options options;
    options.arguments = {program, "-geometry", geometry};
    return startClient(options, std::pair{x, y});
}

TestClient& X11Desktop::startGtkApplication(int gtkVersion) {
    // Drawn in software, without the accessibility bus, writing only to the desktop's directory.
    ChildProcess::Options options;
    options.arguments = {gtkVersion == 4 ? "gtk4-demo" : "gtk3-demo"};
    options.environment = {{"GDK_BACKEND", "x11"},
                           {"GSK_RENDERER", "cairo"},
                           {"NO_AT_BRIDGE", "1"},
                           {"GTK_A11Y", "none"},
                           {"HOME", directory_.string()},
                           {"XDG_CONFIG_HOME", (directory_ / "config").string()},
                           {"XDG_CACHE_HOME", (directory_ / "cache").string()},
                           {"XDG_DATA_HOME", (directory_ / "data").string()}};
    return startClient(options);
}

void X11Desktop::killClient(TestClient& client) {
    client.process->terminate();
    if (!waitUntil([&] { return !probe_->exists(client.window); }, kWindowTimeout)) {
        throw std::runtime_error("the window of a killed client stayed");
    }
}

void X11Desktop::setProperty(WindowId window, const std::string& property, std::uint32_t type,
                             std::uint8_t format, std::uint32_t count, const void* data) {
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window, probe_->atom(property), type,
                        format, count, data);
}

WindowId X11Desktop::createWindow(const TestWindowOptions& options) {
    xcb_connection_t* c = connection();
    const xcb_window_t window = xcb_generate_id(c);
    const std::array<std::uint32_t, 2> values{connection_->screen().white_pixel,
                                              options.overrideRedirect ? 1u : 0u};
    xcb_create_window(
        c, XCB_COPY_FROM_PARENT, window, root(), static_cast<std::int16_t>(options.x),
        static_cast<std::int16_t>(options.y), static_cast<std::uint16_t>(options.width),
        static_cast<std::uint16_t>(options.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());

    const std::string wmClass =
        "glimmerfold-test" + std::string(1, '\0') + options.windowClass + '\0';
    setProperty(window, "WM_CLASS", XCB_ATOM_STRING, 8, wmClass.size(), wmClass.data());
    const std::string& name = options.windowClass;
    setProperty(window, "WM_NAME", XCB_ATOM_STRING, 8, name.size(), name.data());

    std::array<std::uint32_t, 18> hints{};
    hints[0] = kUserPosition | kUserSize | (options.fixedSize ? kMinSize | kMaxSize : 0);
    hints[1] = static_cast<std::uint32_t>(options.x);
    hints[2] = static_cast<std::uint32_t>(options.y);
    hints[3] = hints[5] = hints[7] = static_cast<std::uint32_t>(options.width);
    hints[4] = hints[6] = hints[8] = static_cast<std::uint32_t>(options.height);
    setProperty(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());

    const std::uint32_t pid = static_cast<std::uint32_t>(getpid());
    setProperty(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, 32, 1, &pid);
    if (!options.type.empty()) {
        const std::uint32_t type = probe_->atom(options.type);
        setProperty(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, 32, 1, &type);
    }
    if (!options.states.empty()) {
        std::vector<std::uint32_t> states;
        for (const std::string& state : options.states) {
            states.push_back(probe_->atom(state));
        }
        setProperty(window, "_NET_WM_STATE", XCB_ATOM_ATOM, 32,
                    static_cast<std::uint32_t>(states.size()), states.data());
    }
    if (options.strut) {
        const StrutPartial& s = *options.strut;
        const std::array<std::uint32_t, 12> partial{
            s.left,        s.right,     s.top,       s.bottom,  s.leftStartY,   s.leftEndY,
            s.rightStartY, s.rightEndY, s.topStartX, s.topEndX, s.bottomStartX, s.bottomEndX};
        setProperty(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, 32, 12, partial.data());
        setProperty(window, "_NET_WM_STRUT", XCB_ATOM_CARDINAL, 32, 4, partial.data());
    }
    xcb_map_window(c, window);
    xcb_flush(c);
    const bool managed = windowManagerKind_ != WindowManager::none && !options.overrideRedirect;
    const bool decorated = options.type.empty() || options.type == "_NET_WM_WINDOW_TYPE_NORMAL";
    waitForWindow(
        window, managed,
        managed && decorated ? std::optional(std::pair{options.x, options.y}) : std::nullopt,
        "window " + options.windowClass);
    return window;
}

WindowId X11Desktop::createDock(int x, int y, int width, int height, const StrutPartial& strut) {
    TestWindowOptions options;
    options.x = x;
    options.y = y;
    options.width = width;
    options.height = height;
    options.windowClass = "GlimmerfoldTestDock";
    options.type = "_NET_WM_WINDOW_TYPE_DOCK";
    options.strut = strut;
    return createWindow(options);
}

bool X11Desktop::startTrayHost(std::string* error) {
    if (!trayHost_) {
        trayHost_ = TrayHost::start(*this, error);
    }
    return trayHost_ != nullptr;
}

bool X11Desktop::placeWindow(WindowId client, int x, int y, int clientWidth, int clientHeight) {
    const std::optional<Rect> before = probe_->frameGeometry(client);
    const std::vector<std::uint32_t> extents = probe_->frameExtents(client);
    if (!before || extents.size() != 4) {
        return false;
    }
    // Checked on the frame: the client's own size may lag behind, as the frame is resized first.
    const Rect expected{static_cast<double>(x), static_cast<double>(y),
                        static_cast<double>(clientWidth + extents[0] + extents[1]),
                        static_cast<double>(clientHeight + extents[2] + extents[3])};
    if (*before == expected) {
        return true;
    }
    connection_->sendToWindowManager(
        client, probe_->atom("_NET_MOVERESIZE_WINDOW"),
        {kMoveResizeFlags, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
         static_cast<std::uint32_t>(clientWidth), static_cast<std::uint32_t>(clientHeight)});
    return waitUntil([&] { return probe_->frameGeometry(client) == expected; }, 2s, 2ms);
}

void X11Desktop::setMonitors(const std::vector<Rect>& monitors, std::size_t primary) {
    // libxcb-randr's SetMonitor request is malformed. The automatic monitor goes with its output,
    // which Xvfb names "screen".
    std::vector<std::string> arguments{"xrandr"};
    for (std::size_t i = 0; i < monitorsSet_; ++i) {
        arguments.insert(arguments.end(), {"--delmonitor", "GLIMMERFOLD-" + std::to_string(i)});
    }
    for (std::size_t i = 0; i < monitors.size(); ++i) {
        const Rect& m = monitors[i];
        auto pixels = [](double value) { return std::to_string(static_cast<int>(value)); };
        // Width/millimetres x height/millimetres + x + y, at about 96 dots per inch.
        const std::string geometry = pixels(m.width) + "/" + pixels(m.width / 4) + "x" +
                                     pixels(m.height) + "/" + pixels(m.height / 4) + "+" +
                                     pixels(m.x) + "+" + pixels(m.y);
        const std::string name =
            (i == primary ? "*" : "") + std::string("GLIMMERFOLD-") + std::to_string(i);
        arguments.insert(arguments.end(),
                         {"--setmonitor", name, geometry, i == 0 ? "screen" : "none"});
    }
    ChildProcess::Options options;
    options.arguments = arguments;
    options.environment = clientEnvironment();
    options.outputFile = (directory_ / "xrandr.log").string();
    const std::string& log = options.outputFile;
    std::string error;
    auto xrandr = ChildProcess::start(options, &error);
    if (!xrandr) {
        throw std::runtime_error(error);
    }
    if (xrandr->waitForExit(std::chrono::seconds(5)) != 0) {
        throw std::runtime_error("xrandr failed:\n" + lastLines(log, 5));
    }
    monitorsSet_ = monitors.size();
    if (probe_->monitors().size() != monitors.size()) {
        throw std::runtime_error("the server lists other monitors than those set");
    }
}

}  // namespace gf::test
