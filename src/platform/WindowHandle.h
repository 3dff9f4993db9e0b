#pragma once

#include <cstdint>
#include <optional>

#include "platform/Point.h"
#include "platform/Rect.h"
#include "platform/Size.h"
#include "platform/WindowState.h"

namespace gf {

// A manipulable window of some application. Position and size are those of
// the outer frame as the user sees it, in global top-left coordinates.
// Every method may be called from a background thread and fails softly: a
// window that vanished answers nullopt or false, never throws.
class WindowHandle {
  public:
    virtual ~WindowHandle() = default;

    // The window server's number for this window; nullopt when unknown.
    virtual std::optional<std::uint32_t> windowNumber() const = 0;

    virtual std::optional<Point> position() = 0;
    virtual std::optional<Size> size() = 0;
    // Whether the size can be changed; nullopt when the question failed.
    virtual std::optional<bool> isSizeSettable() = 0;

    // Each returns whether the request was sent successfully. A position may be held back while
    // the window manager still carries out the previous one; asking again (as every tick does)
    // sends the latest once it may.
    virtual bool setPosition(Point topLeft) = 0;
    virtual bool setSize(Size size) = 0;
    // Sends the position held back last, once the window manager has carried out the one before
    // (waiting for that, briefly, if need be): the end of a gesture must leave the window where
    // the hand left it.
    virtual void settle() {}
    virtual bool raise() = 0;     // to the front, without taking focus
    virtual bool makeMain() = 0;  // the application's main (active) window

    // Puts the window at a frame it is known to have had, in one request that is never held
    // back: the last placement of a gesture, after which no further write comes to correct it.
    virtual bool restoreFrame(Rect frame) {
        return setPosition(frame.origin()) && setSize(frame.size());
    }

    // Maximized and fullscreen as the window manager keeps them; a window that vanished, or one
    // without a window manager to keep them, reads as normal.
    virtual WindowState state() { return {}; }
    // Asks the window manager to maximize the window along the given axes and to let go of the
    // others. Leaving the maximized state brings back the size it had before, once the window
    // manager has carried the request out, which it does after this returns.
    virtual bool setMaximized(bool horizontally, bool vertically) {
        (void)horizontally;
        (void)vertically;
        return false;
    }
};

}  // namespace gf
