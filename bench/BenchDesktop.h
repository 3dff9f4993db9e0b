#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Rect.h"
#include "x11/ChildProcess.h"
#include "x11/DesktopProbe.h"
#include "x11/XTestDriver.h"

struct xcb_connection_t;

namespace gf::bench {

using test::WindowId;

// The window every measurement moves: its client window and the window
// manager's frame around it.
struct BenchWindow {
    std::unique_ptr<test::ChildProcess> process;
    WindowId client = 0;
    WindowId frame = 0;
};

// A private Xvfb with openbox and a tray host, like the end-to-end harness's
// desktop, except that openbox keeps its usual Alt + drag bindings: its own
// move and resize are the reference every number is compared with.
class BenchDesktop {
  public:
    struct Options {
        int width = 1280;
        int height = 800;
    };

    // nullptr with a reason when the server, the window manager or the tray
    // host does not come up.
    static std::unique_ptr<BenchDesktop> start(const Options& options, std::string* error);

    BenchDesktop();
    BenchDesktop(const BenchDesktop&) = delete;
    BenchDesktop& operator=(const BenchDesktop&) = delete;
    ~BenchDesktop();

    const std::string& displayName() const { return displayName_; }
    xcb_connection_t* connection() const { return connection_.get(); }
    WindowId root() const { return root_; }
    const std::filesystem::path& directory() const { return directory_; }
    std::vector<std::pair<std::string, std::string>> clientEnvironment() const;

    test::XTestDriver& input() { return *input_; }
    const test::DesktopProbe& probe() const { return *probe_; }

    pid_t serverPid() const { return server_->pid(); }
    pid_t windowManagerPid() const { return windowManager_->pid(); }
    // The tray host's top-level window, inside which tray icons are embedded.
    WindowId trayHostFrame() const { return trayHostFrame_; }

    // Starts xlogo with its frame's top-left at (x, y) and returns once it is
    // managed there. Throws std::runtime_error on failure.
    BenchWindow startXlogo(int x, int y, int width, int height);

    // Asks the window manager for a frame at (x, y) around a client of the
    // given size and waits until it is there; false when it never gets there.
    bool placeWindow(const BenchWindow& window, int x, int y, int clientWidth, int clientHeight);

    // The last lines of the server's, window manager's and tray host's logs.
    std::string logTail() const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };

    bool startServer(const Options& options, std::string* error);
    bool startWindowManager(std::string* error);
    bool startTrayHost(std::string* error);
    std::unique_ptr<test::ChildProcess> startProgram(const std::vector<std::string>& arguments,
                                                     const std::string& logName,
                                                     std::string* error);

    std::filesystem::path directory_;
    std::unique_ptr<test::ChildProcess> server_;
    std::unique_ptr<test::ChildProcess> windowManager_;
    std::unique_ptr<test::ChildProcess> trayHost_;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    WindowId root_ = 0;
    WindowId trayHostFrame_ = 0;
    std::string displayName_;
    std::unique_ptr<test::XTestDriver> input_;
    std::unique_ptr<test::DesktopProbe> probe_;
};

}  // namespace gf::bench
