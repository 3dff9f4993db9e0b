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
#include "platform/x11/XcbConnection.h"
#include "x11/ChildProcess.h"
#include "x11/DesktopProbe.h"
#include "x11/TrayHost.h"
#include "x11/WindowManagerSetup.h"
#include "x11/XTestDriver.h"

namespace gf::test {

// _NET_WM_STRUT_PARTIAL: reserved widths at the root's edges and their spans (inclusive).
struct StrutPartial {
    std::uint32_t left = 0, right = 0, top = 0, bottom = 0;
    std::uint32_t leftStartY = 0, leftEndY = 0, rightStartY = 0, rightEndY = 0;
    std::uint32_t topStartX = 0, topEndX = 0, bottomStartX = 0, bottomEndX = 0;
};

// A window the test process creates; as with -geometry, x and y place the frame.
struct TestWindowOptions {
    int x = 0, y = 0, width = 200, height = 150;
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

// A private Xvfb, window manager and clients, stopped with the object, so tests run in parallel.
class X11Desktop {
  public:
    struct Options {
        int width = 1280;
        int height = 800;
        WindowManager windowManager = WindowManager::openbox;
        bool openboxDragBindings = false;  // openbox's Alt + drag, for the bench to compare with
        bool sessionBus = true;            // a private D-Bus for xfwm4 and GTK clients
        bool trayHost = false;
    };

    // Returns once the window manager manages windows; nullptr with the reason when not.
    static std::unique_ptr<X11Desktop> start(const Options& options, std::string* error);

    const std::string& displayName() const { return displayName_; }  // ":N"
    WindowManager windowManager() const { return windowManagerKind_; }
    xcb_connection_t* connection() const { return connection_->get(); }
    WindowId root() const { return connection_->root(); }
    // Holds the logs; removed with the desktop.
    const std::filesystem::path& directory() const { return directory_; }
    std::vector<std::pair<std::string, std::string>> clientEnvironment() const;

    XTestDriver& input() { return *input_; }
    const DesktopProbe& probe() const { return *probe_; }
    pid_t serverPid() const { return server_->pid(); }
    pid_t windowManagerPid() const { return windowManager_->pid(); }

    bool startTrayHost(std::string* error);
    TrayHost& trayHost() { return *trayHost_; }  // once started

    // Return once the program's window is managed and mapped at (x, y); throw when it is not.
    TestClient& startXlogo(int x, int y, int width, int height) {
        return startPlaced("xlogo", x, y, width, height);
    }
    TestClient& startXterm(int x, int y, int columns = 80, int rows = 24) {
        return startPlaced("xterm", x, y, columns, rows);
    }
    // gtk3-demo or gtk4-demo, which draws its own title bar and, under a compositor, its shadow.
    TestClient& startGtkApplication(int gtkVersion);
    void killClient(TestClient& client);  // returns once its window is gone

    // The test process's own windows, mapped and managed on return.
    WindowId createWindow(const TestWindowOptions& options);
    WindowId createDock(int x, int y, int width, int height, const StrutPartial& strut);
    void destroyWindow(WindowId window) {
        xcb_destroy_window(connection(), window);
        input_->sync();
    }
    // Asks the window manager for a frame at (x, y) around a client of that size.
    bool placeWindow(WindowId client, int x, int y, int clientWidth, int clientHeight);

    // RandR monitors in root coordinates, in this order; the screen must hold them.
    void setMonitors(const std::vector<Rect>& monitors, std::size_t primary = 0);

    void killServer();  // as when the session ends under the clients

  private:
    std::string logTail() const;
    // With -geometry: width and height in the program's units, (x, y) the frame's place.
    TestClient& startPlaced(const std::string& program, int x, int y, int width, int height);
    TestClient& startClient(ChildProcess::Options options,
                            std::optional<std::pair<int, int>> framePosition = std::nullopt);
    bool startServer(const Options& options, std::string* error);
    bool startWindowManager(const Options& options, std::string* error);
    bool startSessionBus(std::string* error);
    bool waitUntilManaging();
    void setProperty(WindowId window, const std::string& property, std::uint32_t type,
                     std::uint8_t format, std::uint32_t count, const void* data);
    void waitForWindow(WindowId window, bool managed,
                       std::optional<std::pair<int, int>> framePosition, const std::string& what);

    // Destroyed in reverse: the directory goes last, after every process writing to it stopped.
    std::filesystem::path directory_;
    std::shared_ptr<void> directoryRemover_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<XcbConnection> connection_;
    std::unique_ptr<XTestDriver> input_;
    std::unique_ptr<DesktopProbe> probe_;
    std::unique_ptr<ChildProcess> sessionBus_;
    std::unique_ptr<ChildProcess> windowManager_;
    std::vector<std::unique_ptr<TestClient>> clients_;
    std::unique_ptr<TrayHost> trayHost_;
    std::string displayName_;
    std::string sessionBusAddress_;
    std::size_t monitorsSet_ = 0;  // named GLIMMERFOLD-0 and on
    WindowManager windowManagerKind_ = WindowManager::none;
};

}  // namespace gf::test
