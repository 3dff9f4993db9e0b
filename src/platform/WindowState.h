#pragma once

namespace gf {

// How the window manager shows a window beyond its frame: maximized along one axis or both,
// or covering its whole display.
struct WindowState {
    bool maximizedHorizontally = false;
    bool maximizedVertically = false;
    bool fullscreen = false;

    bool isMaximized() const { return maximizedHorizontally || maximizedVertically; }

    friend bool operator==(const WindowState&, const WindowState&) = default;
};

}  // namespace gf
