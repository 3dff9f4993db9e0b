#pragma once

#include <cstdint>
#include <memory>

struct xcb_connection_t;

namespace gf {

// Lists or hides one of our own top-level windows in taskbars through the
// _NET_WM_STATE_SKIP_TASKBAR state. Works on the connection that created the
// windows (the toolkit's), so its requests follow the window's creation in
// order; it does not own that connection.
class X11TaskbarHint {
  public:
    // nullptr when the connection cannot be used.
    static std::unique_ptr<X11TaskbarHint> onConnection(xcb_connection_t* connection);

    X11TaskbarHint(xcb_connection_t* connection, std::uint32_t root, std::uint32_t netWmState,
                   std::uint32_t skipTaskbar);
    X11TaskbarHint(const X11TaskbarHint&) = delete;
    X11TaskbarHint& operator=(const X11TaskbarHint&) = delete;

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

    xcb_connection_t* connection_;
    std::uint32_t root_;
    std::uint32_t netWmState_;
    std::uint32_t skipTaskbar_;
};

}  // namespace gf
