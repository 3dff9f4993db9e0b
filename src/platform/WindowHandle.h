#pragma once

#include <cstdint>
#include <optional>

#include "platform/Point.h"
#include "platform/Size.h"

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
};

}  // namespace gf
