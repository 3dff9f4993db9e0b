#pragma once

#include <xcb/xcb.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Rect.h"
#include "x11/DesktopProbe.h"

namespace gf::bench {

// Ordinary application windows, as many as a busy desktop holds: all made by
// one client on a connection of its own, mapped, and managed by the window
// manager where they asked to be. Closing the connection (the crowd going)
// takes them all away at once, as when a program quits.
class WindowCrowd {
    struct Key;

  public:
    static std::unique_ptr<WindowCrowd> open(const std::string& displayName, std::string* error);

    WindowCrowd(const Key&, xcb_connection_t* connection);
    WindowCrowd(const WindowCrowd&) = delete;
    WindowCrowd& operator=(const WindowCrowd&) = delete;
    ~WindowCrowd();

    // Adds windows until there are `count`, spread over the screen in a grid
    // that stays clear of `keepClear`, each new one stacked above the others,
    // and waits until all are managed; false when that does not happen.
    bool growTo(std::size_t count, const Rect& keepClear);
    // One window whose frame's top-left is at (x, y) around a client of the
    // given size, once it is managed there; nullopt when it never is.
    std::optional<test::WindowId> add(int x, int y, int width, int height);

    std::size_t size() const { return windows_.size(); }
    // The first window made: the crowd's lowest unless something restacked it.
    test::WindowId first() const { return windows_.front(); }

  private:
    struct Placed {
        test::WindowId window;
        int x;
        int y;
    };

    test::WindowId create(int x, int y, int width, int height);
    bool waitUntilManaged(const std::vector<Placed>& placed);
    std::vector<Rect> gridClearOf(const Rect& keepClear) const;

    xcb_connection_t* connection_;
    xcb_window_t root_;
    test::DesktopProbe probe_;
    std::vector<test::WindowId> windows_;
};

}  // namespace gf::bench
