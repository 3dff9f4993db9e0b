#include "BenchDesktop.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "PollUntil.h"
#include "platform/x11/XcbReply.h"

namespace gf::bench {

namespace {

using namespace std::chrono_literals;

constexpr auto kStartTimeout = 10s;

// Openbox as most people run it for these two gestures: Alt + left button
// drag moves, Alt + right button drag resizes from the nearest corner. No key
// bindings (Glimmerfold's combinations must reach it), no resistance, no
// margins, and a drag that starts at the first pixel, as Glimmerfold's does.
constexpr const char* kOpenboxConfig = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <resistance><strength>0</strength><screen_edge_strength>0</screen_edge_strength></resistance>
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <theme><animateIconify>no</animateIconify></theme>
  <desktops><number>1</number></desktops>
  <margins><top>0</top><bottom>0</bottom><left>0</left><right>0</right></margins>
  <keyboard></keyboard>
  <mouse>
    <dragThreshold>1</dragThreshold>
    <context name="Frame">
      <mousebind button="A-Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="A-Left" action="Drag"><action name="Move"/></mousebind>
      <mousebind button="A-Right" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="A-Right" action="Drag"><action name="Resize"/></mousebind>
    </context>
  </mouse>
  <menu></menu>
  <applications></applications>
</openbox_config>
)";

constexpr std::uint32_t kGravityNorthWest = 1;
constexpr std::uint32_t kMoveResizeAllFields = (1u << 8) | (1u << 9) | (1u << 10) | (1u << 11);
constexpr std::uint32_t kSourceIndicationTool = 2;

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
        if (poll(&descriptor, 1, 100) <= 0) {
            continue;
        }
        std::array<char, 32> buffer{};
        const ssize_t count = read(fd, buffer.data(), buffer.size());
        if (count <= 0) {
            return std::nullopt;  // the server exited
        }
        number.append(buffer.data(), static_cast<std::size_t>(count));
        if (const std::size_t end = number.find('\n'); end != std::string::npos) {
            number.resize(end);
            return number;
        }
    }
    return std::nullopt;
}

}  // namespace

void BenchDesktop::Disconnect::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection);
}

BenchDesktop::BenchDesktop() = default;

BenchDesktop::~BenchDesktop() {
    trayHost_.reset();
    windowManager_.reset();
    probe_.reset();
    input_.reset();
    connection_.reset();
    server_.reset();
    if (!directory_.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
}

std::unique_ptr<BenchDesktop> BenchDesktop::start(const Options& options, std::string* error) {
    auto desktop = std::make_unique<BenchDesktop>();
    std::string directory =
        (std::filesystem::temp_directory_path() / "glimmerfold-bench-XXXXXX").string();
    if (mkdtemp(directory.data()) == nullptr) {
        *error = "cannot create a temporary directory";
        return nullptr;
    }
    desktop->directory_ = directory;
    if (!desktop->startServer(options, error) || !desktop->startWindowManager(error) ||
        !desktop->startTrayHost(error)) {
        *error += "\n" + desktop->logTail();
        return nullptr;
    }
    return desktop;
}

std::unique_ptr<test::ChildProcess> BenchDesktop::startProgram(
    const std::vector<std::string>& arguments, const std::string& logName, std::string* error) {
    test::ChildProcess::Options options;
    options.arguments = arguments;
    options.environment = clientEnvironment();
    options.outputFile = (directory_ / logName).string();
    return test::ChildProcess::start(options, error);
}

bool BenchDesktop::startServer(const Options& options, std::string* error) {
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        *error = "cannot create a pipe";
        return false;
    }
    const std::string screen =
        std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
    test::ChildProcess::Options server;
    server.arguments = {"Xvfb",      "-displayfd", std::to_string(pipe[1]),
                        "-screen",   "0",          screen,
                        "-nolisten", "tcp",        "-noreset"};
    server.outputFile = (directory_ / "xvfb.log").string();
    server.inheritedFd = pipe[1];
    server_ = test::ChildProcess::start(server, error);
    close(pipe[1]);
    std::optional<std::string> number;
    if (server_) {
        number = readDisplayNumber(pipe[0], kStartTimeout);
    }
    close(pipe[0]);
    if (!server_) {
        return false;
    }
    if (!number || number->empty()) {
        *error = "Xvfb did not report its display";
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
    input_ = std::make_unique<test::XTestDriver>(connection_.get(), root_);
    probe_ = std::make_unique<test::DesktopProbe>(connection_.get(), root_);
    return true;
}

bool BenchDesktop::startWindowManager(std::string* error) {
    const std::filesystem::path config = directory_ / "rc.xml";
    std::ofstream(config) << kOpenboxConfig;
    test::ChildProcess::Options openbox;
    openbox.arguments = {"openbox", "--config-file", config.string(), "--sm-disable"};
    openbox.environment = clientEnvironment();
    openbox.environment.emplace_back("XDG_CONFIG_HOME", (directory_ / "config").string());
    openbox.environment.emplace_back("XDG_CACHE_HOME", (directory_ / "cache").string());
    openbox.environment.emplace_back("XDG_DATA_HOME", (directory_ / "data").string());
    openbox.environment.emplace_back("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    openbox.outputFile = (directory_ / "openbox.log").string();
    windowManager_ = test::ChildProcess::start(openbox, error);
    if (!windowManager_) {
        return false;
    }
    // Only a window that actually got managed proves that openbox took over.
    xcb_connection_t* c = connection_.get();
    const xcb_window_t probeWindow = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, probeWindow, root_, 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const auto deadline = std::chrono::steady_clock::now() + kStartTimeout;
    bool managed = false;
    while (!managed && std::chrono::steady_clock::now() < deadline && windowManager_->isRunning()) {
        xcb_map_window(c, probeWindow);
        xcb_flush(c);
        managed = pollUntil([&] { return probe_->isManaged(probeWindow); }, 500ms, 5ms);
        if (!managed) {
            xcb_unmap_window(c, probeWindow);
        }
    }
    xcb_destroy_window(c, probeWindow);
    input_->sync();
    if (!managed) {
        *error = "openbox did not start managing windows";
    }
    return managed;
}

bool BenchDesktop::startTrayHost(std::string* error) {
    trayHost_ = startProgram({"trayer", "--edge", "top", "--align", "right", "--widthtype", "pixel",
                              "--width", "120", "--height", "28", "--SetDockType", "true"},
                             "trayer.log", error);
    if (!trayHost_) {
        return false;
    }
    const xcb_atom_t selection = probe_->atom("_NET_SYSTEM_TRAY_S0");
    xcb_connection_t* c = connection_.get();
    const bool ready = pollUntil(
        [&] {
            auto owner =
                xcbReply(c, xcb_get_selection_owner_reply, xcb_get_selection_owner(c, selection));
            if (!owner || owner->owner == XCB_WINDOW_NONE) {
                return false;
            }
            const auto client = probe_->findClientByPid(trayHost_->pid());
            trayHostFrame_ = client ? probe_->frameOf(*client).value_or(0) : 0;
            return trayHostFrame_ != 0 && probe_->isViewable(trayHostFrame_);
        },
        kStartTimeout, 5ms);
    if (!ready) {
        *error = "trayer took no tray selection or showed no window";
    }
    return ready;
}

std::vector<std::pair<std::string, std::string>> BenchDesktop::clientEnvironment() const {
    return {{"DISPLAY", displayName_}};
}

BenchWindow BenchDesktop::startXlogo(int x, int y, int width, int height) {
    const std::string geometry = std::to_string(width) + "x" + std::to_string(height) + "+" +
                                 std::to_string(x) + "+" + std::to_string(y);
    std::string error;
    BenchWindow window;
    window.process = startProgram({"xlogo", "-geometry", geometry}, "xlogo.log", &error);
    if (!window.process) {
        throw std::runtime_error(error);
    }
    const bool placed = pollUntil(
        [&] {
            if (window.client == 0) {
                window.client = probe_->findClientByPid(window.process->pid()).value_or(0);
            }
            if (window.client == 0 || !probe_->isManaged(window.client)) {
                return false;
            }
            const std::optional<Rect> frame = probe_->frameGeometry(window.client);
            return frame && frame->x == x && frame->y == y;
        },
        kStartTimeout, 5ms);
    if (!placed) {
        throw std::runtime_error("xlogo did not appear where expected\n" + logTail());
    }
    window.frame = probe_->frameOf(window.client).value_or(0);
    return window;
}

bool BenchDesktop::placeWindow(const BenchWindow& window, int x, int y, int clientWidth,
                               int clientHeight) {
    const std::optional<Rect> before = probe_->frameGeometry(window.client);
    const std::vector<std::uint32_t> extents = probe_->frameExtents(window.client);
    if (!before || extents.size() != 4) {
        return false;
    }
    // The frame is the client with the decorations around it. The client's own size may still
    // be on its way from a previous placement, as the window manager resizes the frame first.
    const Rect expected{static_cast<double>(x), static_cast<double>(y),
                        static_cast<double>(clientWidth + extents[0] + extents[1]),
                        static_cast<double>(clientHeight + extents[2] + extents[3])};
    if (*before == expected) {
        return true;
    }
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window.client;
    message.type = probe_->atom("_NET_MOVERESIZE_WINDOW");
    message.data.data32[0] =
        kGravityNorthWest | kMoveResizeAllFields | (kSourceIndicationTool << 12);
    message.data.data32[1] = static_cast<std::uint32_t>(x);
    message.data.data32[2] = static_cast<std::uint32_t>(y);
    message.data.data32[3] = static_cast<std::uint32_t>(clientWidth);
    message.data.data32[4] = static_cast<std::uint32_t>(clientHeight);
    xcb_send_event(connection_.get(), 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection_.get());
    return pollUntil([&] { return probe_->frameGeometry(window.client) == expected; }, 2s, 2ms);
}

std::string BenchDesktop::logTail() const {
    std::string text;
    for (const char* log : {"xvfb.log", "openbox.log", "trayer.log"}) {
        const std::filesystem::path file = directory_ / log;
        if (std::filesystem::exists(file)) {
            text += std::string(log) + ":\n" + tail(file, 10);
        }
    }
    return text;
}

}  // namespace gf::bench
