#include "x11/X11Desktop.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "platform/x11/XcbReply.h"
#include "x11/WaitUntil.h"

namespace gf::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kServerStartTimeout = 5000ms;
constexpr auto kWindowTimeout = 5000ms;
// A window mapped while openbox is still starting may be left unmanaged;
// after this long the probe window is mapped again.
constexpr auto kProbeRetry = 500ms;

// No key or mouse bindings (they would grab Super and friends), no margins,
// no animations, one desktop: windows land exactly where they are asked to.
constexpr const char* kOpenboxConfig = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <resistance><strength>0</strength><screen_edge_strength>0</screen_edge_strength></resistance>
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <theme><animateIconify>no</animateIconify></theme>
  <desktops><number>1</number></desktops>
  <margins><top>0</top><bottom>0</bottom><left>0</left><right>0</right></margins>
  <keyboard></keyboard>
  <mouse></mouse>
  <menu></menu>
  <applications></applications>
</openbox_config>
)";

// The others, likewise: no task bar or toolbar (a panel would shrink the work
// area), no key bindings, no snapping or resistance of their own.
constexpr const char* kIcewmPreferences = R"(ShowTaskBar=0
Win95Keys=0
ModSuperIsCtrlAlt=0
ClickToFocus=1
FocusOnMap=1
EdgeSwitch=0
HorizontalEdgeSwitch=0
VerticalEdgeSwitch=0
SnapMove=0
SnapDistance=0
EdgeResistance=0
WorkspaceNames=" 1 "
)";

constexpr const char* kFluxboxInit = R"(session.screen0.toolbar.visible: false
session.screen0.slit.autoHide: true
session.screen0.workspaces: 1
session.screen0.edgeSnapThreshold: 0
session.screen0.focusModel: ClickFocus
session.screen0.windowPlacement: RowSmartPlacement
session.styleFile: /usr/share/fluxbox/styles/Emerge
session.configVersion: 13
)";

// Without a wallpaper setter installed, fluxbox's fbsetbg otherwise pops up a
// message box a few seconds after the start, over the windows and with the focus.
constexpr const char* kFluxboxOverlay = "background: unset\n";

// WM_SIZE_HINTS flags.
constexpr std::uint32_t kUserPosition = 1u << 0;
constexpr std::uint32_t kUserSize = 1u << 1;
constexpr std::uint32_t kMinSize = 1u << 4;
constexpr std::uint32_t kMaxSize = 1u << 5;

std::string tail(const std::filesystem::path& file, std::size_t lines) {
    std::ifstream stream(file);
    std::vector<std::string> all;
    for (std::string line; std::getline(stream, line);) {
        all.push_back(line);
    }
    std::ostringstream text;
    for (std::size_t i = all.size() > lines ? all.size() - lines : 0; i < all.size(); ++i) {
        text << "  " << all[i] << "\n";
    }
    return text.str();
}

std::optional<std::string> readDisplayNumber(int fd, std::chrono::milliseconds timeout) {
    std::string number;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (std::chrono::steady_clock::now() < deadline) {
        pollfd descriptor{fd, POLLIN, 0};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (poll(&descriptor, 1, static_cast<int>(std::max<long>(1, left.count()))) <= 0) {
            continue;
        }
        char buffer[32];
        const ssize_t count = read(fd, buffer, sizeof buffer);
        if (count <= 0) {
            return std::nullopt;  // the server exited
        }
        number.append(buffer, static_cast<std::size_t>(count));
        if (number.find('\n') != std::string::npos) {
            number.resize(number.find('\n'));
            return number;
        }
    }
    return std::nullopt;
}

}  // namespace

void X11Desktop::Disconnect::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection);
}

X11Desktop::X11Desktop() = default;

X11Desktop::~X11Desktop() {
    clients_.clear();
    windowManager_.reset();
    sessionBus_.reset();
    probe_.reset();
    input_.reset();
    connection_.reset();
    server_.reset();
    if (!directory_.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
}

const char* nameOf(WindowManager windowManager) {
    switch (windowManager) {
        case WindowManager::none:
            return "none";
        case WindowManager::openbox:
            return "openbox";
        case WindowManager::xfwm4:
            return "xfwm4";
        case WindowManager::xfwm4Compositing:
            return "xfwm4Compositing";
        case WindowManager::icewm:
            return "icewm";
        case WindowManager::fluxbox:
            return "fluxbox";
    }
    return "unknown";
}

void PrintTo(WindowManager windowManager, std::ostream* stream) {
    *stream << nameOf(windowManager);
}

const std::vector<WindowManager>& everyWindowManager() {
    static const std::vector<WindowManager> all{
        WindowManager::openbox, WindowManager::xfwm4,   WindowManager::xfwm4Compositing,
        WindowManager::icewm,   WindowManager::fluxbox, WindowManager::none};
    return all;
}

std::unique_ptr<X11Desktop> X11Desktop::start(const Options& options, std::string* error) {
    std::string ignored;
    if (error == nullptr) {
        error = &ignored;
    }
    auto desktop = std::make_unique<X11Desktop>();
    std::string directory =
        (std::filesystem::temp_directory_path() / "glimmerfold-e2e-XXXXXX").string();
    if (mkdtemp(directory.data()) == nullptr) {
        *error = "cannot create a temporary directory";
        return nullptr;
    }
    desktop->directory_ = directory;
    if (!desktop->startServer(options, error)) {
        return nullptr;
    }
    if (!desktop->startWindowManager(options.windowManager, error)) {
        *error += "\n" + desktop->logTail();
        return nullptr;
    }
    return desktop;
}

bool X11Desktop::startServer(const Options& options, std::string* error) {
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        *error = "cannot create a pipe";
        return false;
    }
    const std::string screen =
        std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
    ChildProcess::Options server;
    server.arguments = {"Xvfb",      "-displayfd", std::to_string(pipe[1]),
                        "-screen",   "0",          screen,
                        "-nolisten", "tcp",        "-noreset"};
    server.outputFile = (directory_ / "xvfb.log").string();
    server.inheritedFd = pipe[1];
    server_ = ChildProcess::start(server, error);
    close(pipe[1]);
    std::optional<std::string> number;
    if (server_) {
        number = readDisplayNumber(pipe[0], kServerStartTimeout);
    }
    close(pipe[0]);
    if (!server_) {
        return false;
    }
    if (!number || number->empty()) {
        *error = "Xvfb did not report its display\n" + logTail();
        return false;
    }
    displayName_ = ":" + *number;

    int screenNumber = 0;
    connection_.reset(xcb_connect(displayName_.c_str(), &screenNumber));
    if (xcb_connection_has_error(connection_.get()) != 0) {
        *error = "cannot connect to the private display " + displayName_;
        return false;
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
    input_ = std::make_unique<XTestDriver>(connection_.get(), root_);
    probe_ = std::make_unique<DesktopProbe>(connection_.get(), root_);
    return true;
}

ChildProcess::Options X11Desktop::windowManagerProcess(WindowManager windowManager) const {
    ChildProcess::Options process;
    process.environment = clientEnvironment();
    // Each keeps its settings and caches in the desktop's directory; their
    // themes come from the system's data directories, whatever a test points
    // the variables at for its own purposes.
    process.environment.insert(process.environment.end(),
                               {{"HOME", directory_.string()},
                                {"XDG_CONFIG_HOME", (directory_ / "config").string()},
                                {"XDG_CONFIG_DIRS", (directory_ / "config-dirs").string()},
                                {"XDG_CACHE_HOME", (directory_ / "cache").string()},
                                {"XDG_DATA_HOME", (directory_ / "data").string()},
                                {"XDG_DATA_DIRS", "/usr/local/share:/usr/share"}});
    process.outputFile = (directory_ / "window-manager.log").string();
    switch (windowManager) {
        case WindowManager::openbox: {
            const std::filesystem::path config = directory_ / "rc.xml";
            std::ofstream(config) << kOpenboxConfig;
            process.arguments = {"openbox", "--config-file", config.string(), "--sm-disable"};
            break;
        }
        case WindowManager::xfwm4:
        case WindowManager::xfwm4Compositing:
            process.arguments = {
                "xfwm4", "--sm-client-disable",
                windowManager == WindowManager::xfwm4 ? "--compositor=off" : "--compositor=on"};
            break;
        case WindowManager::icewm: {
            const std::filesystem::path config = directory_ / "icewm";
            std::filesystem::create_directories(config);
            std::ofstream(config / "preferences") << kIcewmPreferences;
            process.environment.emplace_back("ICEWM_PRIVCFG", config.string());
            process.arguments = {"icewm", "--config=" + (config / "preferences").string()};
            break;
        }
        case WindowManager::fluxbox: {
            // In fluxbox's own directory: on a first start it overwrites the file given with
            // -rc by the system's defaults (toolbar, key bindings, wallpaper) unless it is there.
            const std::filesystem::path config = directory_ / ".fluxbox";
            std::filesystem::create_directories(config);
            std::ofstream(config / "keys");
            std::ofstream(config / "apps");
            std::ofstream(config / "overlay") << kFluxboxOverlay;
            std::ofstream(config / "init")
                << "session.keyFile: " << (config / "keys").string()
                << "\nsession.appsFile: " << (config / "apps").string()
                << "\nsession.styleOverlay: " << (config / "overlay").string() << "\n"
                << kFluxboxInit;
            process.arguments = {"fluxbox", "-rc", (config / "init").string()};
            break;
        }
        case WindowManager::none:
            break;
    }
    return process;
}

bool X11Desktop::startSessionBus(std::string* error) {
    const std::filesystem::path socket = directory_ / "session-bus";
    ChildProcess::Options bus;
    bus.arguments = {"dbus-daemon", "--session", "--nofork", "--nopidfile",
                     "--address=unix:path=" + socket.string()};
    bus.outputFile = (directory_ / "session-bus.log").string();
    sessionBus_ = ChildProcess::start(bus, error);
    if (!sessionBus_) {
        return false;
    }
    if (!waitUntil([&] { return std::filesystem::exists(socket); }, kServerStartTimeout)) {
        *error = "the private session bus did not start";
        return false;
    }
    sessionBusAddress_ = "unix:path=" + socket.string();
    return true;
}

bool X11Desktop::startWindowManager(WindowManager windowManager, std::string* error) {
    // xfwm4 reads its settings over D-Bus, and GTK clients look for services
    // there: a private bus keeps both away from whatever session runs the tests.
    if (!startSessionBus(error)) {
        return false;
    }
    if (windowManager == WindowManager::none) {
        return true;
    }
    windowManager_ = ChildProcess::start(windowManagerProcess(windowManager), error);
    if (!windowManager_) {
        return false;
    }
    if (!waitUntilManaging()) {
        *error = std::string(nameOf(windowManager)) + " did not start managing windows";
        return false;
    }
    managed_ = true;
    windowManagerKind_ = windowManager;
    return true;
}

bool X11Desktop::waitUntilManaging() {
    // _NET_SUPPORTING_WM_CHECK appears before openbox takes over new windows,
    // so only a window that actually got managed proves it is ready.
    xcb_connection_t* c = connection_.get();
    const xcb_window_t probeWindow = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, probeWindow, root_, 0, 0, 10, 10, 0,
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
    for (const char* log : {"xvfb.log", "window-manager.log"}) {
        const std::filesystem::path file = directory_ / log;
        if (std::filesystem::exists(file)) {
            text += std::string(log) + ":\n" + tail(file, 10);
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

TestClient& X11Desktop::startClient(const std::vector<std::string>& arguments,
                                    std::optional<std::pair<int, int>> framePosition) {
    ChildProcess::Options options;
    options.arguments = arguments;
    return startClient(options, framePosition);
}

TestClient& X11Desktop::startClient(ChildProcess::Options options,
                                    std::optional<std::pair<int, int>> framePosition) {
    auto client = std::make_unique<TestClient>();
    const std::vector<std::string>& arguments = options.arguments;
    const auto own = options.environment;
    options.environment = clientEnvironment();
    options.environment.insert(options.environment.end(), own.begin(), own.end());
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
                                 tail(options.outputFile, 5));
    }
    client->window = *window;
    waitForWindow(client->window, managed_, framePosition, arguments.front());
    clients_.push_back(std::move(client));
    return *clients_.back();
}

TestClient& X11Desktop::startXlogo(int x, int y, int width, int height) {
    const std::string geometry = std::to_string(width) + "x" + std::to_string(height) + "+" +
                                 std::to_string(x) + "+" + std::to_string(y);
    return startClient({"xlogo", "-geometry", geometry}, std::pair{x, y});
}

TestClient& X11Desktop::startGtkApplication(int gtkVersion) {
    ChildProcess::Options options;
    options.arguments = {gtkVersion == 4 ? "gtk4-demo" : "gtk3-demo"};
    options.environment = {// Drawn in software and without the accessibility bus, which Xvfb
                           // sessions lack; everything it writes stays in the desktop's directory.
                           {"GDK_BACKEND", "x11"},
                           {"GSK_RENDERER", "cairo"},
                           {"NO_AT_BRIDGE", "1"},
                           {"GTK_A11Y", "none"},
                           {"HOME", directory_.string()},
                           {"XDG_CONFIG_HOME", (directory_ / "config").string()},
                           {"XDG_CACHE_HOME", (directory_ / "cache").string()},
                           {"XDG_DATA_HOME", (directory_ / "data").string()}};
    return startClient(options);
}

TestClient& X11Desktop::startXterm(int x, int y, int columns, int rows) {
    const std::string geometry = std::to_string(columns) + "x" + std::to_string(rows) + "+" +
                                 std::to_string(x) + "+" + std::to_string(y);
    return startClient({"xterm", "-geometry", geometry}, std::pair{x, y});
}

void X11Desktop::killClient(TestClient& client) {
    client.process->terminate();
    if (!waitUntil([&] { return !probe_->exists(client.window); }, kWindowTimeout)) {
        throw std::runtime_error("the window of a killed client stayed");
    }
}

void X11Desktop::setProperty(WindowId window, const std::string& property, std::uint32_t type,
                             std::uint8_t format, std::uint32_t count, const void* data) {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, probe_->atom(property),
                        type, format, count, data);
}

WindowId X11Desktop::createWindow(const TestWindowOptions& options) {
    xcb_connection_t* c = connection_.get();
    const xcb_window_t window = xcb_generate_id(c);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const std::array<std::uint32_t, 2> values{screen->white_pixel,
                                              options.overrideRedirect ? 1u : 0u};
    xcb_create_window(
        c, XCB_COPY_FROM_PARENT, window, root_, static_cast<std::int16_t>(options.x),
        static_cast<std::int16_t>(options.y), static_cast<std::uint16_t>(options.width),
        static_cast<std::uint16_t>(options.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());

    const std::string wmClass =
        "glimmerfold-test" + std::string(1, '\0') + options.windowClass + '\0';
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(wmClass.size()), wmClass.data());
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(options.windowClass.size()),
                        options.windowClass.data());

    std::array<std::uint32_t, 18> hints{};
    hints[0] = kUserPosition | kUserSize | (options.fixedSize ? kMinSize | kMaxSize : 0);
    hints[1] = static_cast<std::uint32_t>(options.x);
    hints[2] = static_cast<std::uint32_t>(options.y);
    hints[3] = hints[5] = hints[7] = static_cast<std::uint32_t>(options.width);
    hints[4] = hints[6] = hints[8] = static_cast<std::uint32_t>(options.height);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());

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
    const bool managed = managed_ && !options.overrideRedirect;
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

void X11Desktop::destroyWindow(WindowId window) {
    xcb_destroy_window(connection_.get(), window);
    input_->sync();
}

void X11Desktop::setMonitors(const std::vector<Rect>& monitors, std::size_t primary) {
    xcb_connection_t* c = connection_.get();
    auto resources = xcbReply(c, xcb_randr_get_screen_resources_current_reply,
                              xcb_randr_get_screen_resources_current(c, root_));
    if (!resources || xcb_randr_get_screen_resources_current_outputs_length(resources.get()) < 1) {
        throw std::runtime_error("the server has no RandR output");
    }
    const xcb_randr_output_t output =
        *xcb_randr_get_screen_resources_current_outputs(resources.get());
    auto outputInfo = xcbReply(c, xcb_randr_get_output_info_reply,
                               xcb_randr_get_output_info(c, output, resources->config_timestamp));
    if (!outputInfo) {
        throw std::runtime_error("cannot read the RandR output");
    }
    const std::string outputName(
        reinterpret_cast<const char*>(xcb_randr_get_output_info_name(outputInfo.get())),
        static_cast<std::size_t>(xcb_randr_get_output_info_name_length(outputInfo.get())));

    // xrandr does what libxcb-randr's SetMonitor cannot (it sends a malformed
    // request). Monitors set earlier go first; the automatic monitor of the
    // output disappears once the output belongs to the first new monitor.
    std::vector<std::string> arguments{"xrandr"};
    if (auto existing =
            xcbReply(c, xcb_randr_get_monitors_reply, xcb_randr_get_monitors(c, root_, 0))) {
        for (auto it = xcb_randr_get_monitors_monitors_iterator(existing.get()); it.rem > 0;
             xcb_randr_monitor_info_next(&it)) {
            if (it.data->automatic == 0) {
                auto name =
                    xcbReply(c, xcb_get_atom_name_reply, xcb_get_atom_name(c, it.data->name));
                if (name) {
                    arguments.insert(arguments.end(),
                                     {"--delmonitor",
                                      std::string(xcb_get_atom_name_name(name.get()),
                                                  static_cast<std::size_t>(
                                                      xcb_get_atom_name_name_length(name.get())))});
                }
            }
        }
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
                         {"--setmonitor", name, geometry, i == 0 ? outputName : "none"});
    }
    ChildProcess::Options options;
    options.arguments = arguments;
    options.environment = clientEnvironment();
    options.outputFile = (directory_ / "xrandr.log").string();
    std::string error;
    auto xrandr = ChildProcess::start(options, &error);
    if (!xrandr) {
        throw std::runtime_error(error);
    }
    if (xrandr->waitForExit(kWindowTimeout) != 0) {
        throw std::runtime_error("xrandr failed:\n" + tail(options.outputFile, 5));
    }
    if (probe_->monitors().size() != monitors.size()) {
        throw std::runtime_error("the server lists other monitors than those set");
    }
}

}  // namespace gf::test
