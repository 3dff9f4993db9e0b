#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Rect.h"
#include "x11/ChildProcess.h"
#include "x11/DesktopProbe.h"
#include "x11/TrayHost.h"
#include "x11/WindowManagerSetup.h"
#include "x11/XTestDriver.h"

struct xcb_connection_t;

namespace gf::test {

// _NET_WM_STRUT_PARTIAL: reserved widths at the root's edges and the span of
// each along its edge (start and end inclusive).
struct StrutPartial {
    std::uint32_t left = 0, right = 0, top = 0, bottom = 0;
    std::uint32_t leftStartY = 0, leftEndY = 0, rightStartY = 0, rightEndY = 0;
    std::uint32_t topStartX = 0, topEndX = 0, bottomStartX = 0, bottomEndX = 0;
};

// A window the harness creates itself. Like an application's -geometry,
// x and y place the outer frame and width and height size the client.
struct TestWindowOptions {
    int x = 0;
    int y = 0;
    int width = 200;
    int height = 150;
    std::string windowClass = "GlimmerfoldTestWindow";
    std::string type;  // an atom name such as "_NET_WM_WINDOW_TYPE_UTILITY"; none when empty
    std::vector<std::string> states;  // initial _NET_WM_STATE atoms, e.g. "_NET_WM_STATE_ABOVE"
    bool fixedSize = false;           // minimum and maximum size both equal the size
    bool overrideRedirect = false;    // like a menu or tooltip: not managed
    std::optional<StrutPartial> strut;
};

// A program with a window on the private desktop.
struct TestClient {
    std::unique_ptr<ChildProcess> process;
    WindowId window = 0;  // its client window
    std::int32_t pid = 0;
};

// A private X server (Xvfb, display picked with -displayfd) with a window
// manager and the clients a test starts, all stopped when the object goes.
// Every process gets its own, so tests run in parallel.
class X11Desktop {
  public:
    struct Options {
        int width = 1280;
        int height = 800;
        // Started before start() returns, which waits until it manages windows.
        WindowManager windowManager = WindowManager::openbox;
        // openbox's own Alt + drag move and resize, which the bench compares Glimmerfold with.
        bool openboxDragBindings = false;
        // A private D-Bus session for xfwm4's settings and GTK clients; the bench runs without.
        bool sessionBus = true;
        // A tray host (trayer), started before start() returns.
        bool trayHost = false;
    };

    // Returns once the server runs and the window manager manages windows;
    // nullptr with a reason (and the logs' tails) when that fails.
    static std::unique_ptr<X11Desktop> start(const Options& options, std::string* error);

    X11Desktop();
    X11Desktop(const X11Desktop&) = delete;
    X11Desktop& operator=(const X11Desktop&) = delete;
    ~X11Desktop();

    const std::string& displayName() const { return displayName_; }  // ":N"
    WindowManager windowManager() const { return windowManagerKind_; }
    xcb_connection_t* connection() const { return connection_.get(); }
    WindowId root() const { return root_; }
    // A temporary directory removed with the desktop; logs are kept there.
    const std::filesystem::path& directory() const { return directory_; }
    // The variables a program needs to run on this desktop (DISPLAY).
    std::vector<std::pair<std::string, std::string>> clientEnvironment() const;

    XTestDriver& input() { return *input_; }
    const DesktopProbe& probe() const { return *probe_; }
    pid_t serverPid() const { return server_->pid(); }
    pid_t windowManagerPid() const { return windowManager_->pid(); }

    // Starts the tray host unless it runs; false with the reason when it does not come up.
    bool startTrayHost(std::string* error);
    // The tray host; only once started.
    TrayHost& trayHost() { return *trayHost_; }

    // Start a program and return once its window is managed, mapped and, when
    // a place was given, at that place. They throw std::runtime_error on failure.
    TestClient& startXlogo(int x, int y, int width, int height);
    TestClient& startXterm(int x, int y, int columns = 80, int rows = 24);
    // A GTK application (major version 3 or 4) that draws its own title bar
    // and, under a compositor, its shadow; placed where the window manager likes.
    TestClient& startGtkApplication(int gtkVersion);
    TestClient& startClient(const std::vector<std::string>& arguments,
                            std::optional<std::pair<int, int>> framePosition = std::nullopt);
    // The same with the process's own options: its environment is added to the desktop's.
    TestClient& startClient(ChildProcess::Options options,
                            std::optional<std::pair<int, int>> framePosition = std::nullopt);
    // Ends the program and waits until its window is gone.
    void killClient(TestClient& client);

    // Windows owned by the test process itself, mapped and managed on return.
    WindowId createWindow(const TestWindowOptions& options);
    WindowId createDock(int x, int y, int width, int height, const StrutPartial& strut);
    void destroyWindow(WindowId window);
    // Asks the window manager for a frame at (x, y) around a client of the given size and waits
    // until it is there; false when it never gets there.
    bool placeWindow(WindowId client, int x, int y, int clientWidth, int clientHeight);

    // Replaces the RandR monitors by these rectangles (root coordinates) in
    // this order, the one at index primary being the primary monitor. The
    // screen must be large enough to hold them.
    void setMonitors(const std::vector<Rect>& monitors, std::size_t primary = 0);

    // Stops the X server at once, as when the session ends under the clients.
    void killServer();

    // The last lines of the server's, the window manager's and the tray host's logs.
    std::string logTail() const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };

    bool startServer(const Options& options, std::string* error);
    bool startWindowManager(const Options& options, std::string* error);
    bool startSessionBus(std::string* error);
    bool waitUntilManaging();
    void setProperty(WindowId window, const std::string& property, std::uint32_t type,
                     std::uint8_t format, std::uint32_t count, const void* data);
    void waitForWindow(WindowId window, bool managed,
                       std::optional<std::pair<int, int>> framePosition, const std::string& what);

    std::filesystem::path directory_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> sessionBus_;
    std::string sessionBusAddress_;
    std::unique_ptr<ChildProcess> windowManager_;
    WindowManager windowManagerKind_ = WindowManager::none;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    WindowId root_ = 0;
    std::string displayName_;
    bool managed_ = false;
    std::unique_ptr<XTestDriver> input_;
    std::unique_ptr<DesktopProbe> probe_;
    std::vector<std::unique_ptr<TestClient>> clients_;
    std::unique_ptr<TrayHost> trayHost_;
};

}  // namespace gf::test
