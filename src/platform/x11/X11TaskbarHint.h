#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace gf {

class XcbConnection;

// Lists or hides one of our own top-level windows in taskbars through the
// _NET_WM_STATE_SKIP_TASKBAR state. Uses a connection of its own, since the
// windows belong to the toolkit's connection.
class X11TaskbarHint {
    struct Key;  // only connect() constructs hints

  public:
    // Connects to the named display ($DISPLAY when null or empty); nullptr
    // with a one-line reason when that fails.
    static std::unique_ptr<X11TaskbarHint> connect(const char* displayName, std::string* error);

    X11TaskbarHint(const Key&, std::unique_ptr<XcbConnection> connection);
    X11TaskbarHint(const X11TaskbarHint&) = delete;
    X11TaskbarHint& operator=(const X11TaskbarHint&) = delete;
    ~X11TaskbarHint();

    // An unmapped window gets the state in its property, which the window
    // manager reads when the window is mapped; a mapped window's state is
    // changed by asking the window manager. False when the server refused.
    bool setSkipTaskbar(std::uint32_t window, bool skip);

    // Whether the window's _NET_WM_STATE lists the skip-taskbar state.
    bool skipsTaskbar(std::uint32_t window);

  private:
    bool isMapped(std::uint32_t window);
    bool rewriteStateProperty(std::uint32_t window, bool skip);
    bool askWindowManager(std::uint32_t window, bool skip);

    std::unique_ptr<XcbConnection> connection_;
};

}  // namespace gf
