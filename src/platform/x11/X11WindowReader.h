#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Rect.h"
#include "platform/WindowDescription.h"
#include "platform/x11/StackedWindow.h"
#include "platform/x11/X11FrameGeometryReader.h"
#include "platform/x11/X11RootProperties.h"
#include "platform/x11/X11Stacking.h"
#include "platform/x11/X11WindowProperties.h"

namespace gf {

class XcbConnection;

// Read-only questions about the windows on the screen, through one connection: the stacking
// order, each window's properties, what the root window says and frame geometry, each asked of
// the part that knows it. Safe to use from several threads at once.
class X11WindowReader {
  public:
    explicit X11WindowReader(const XcbConnection& connection);
    X11WindowReader(const X11WindowReader&) = delete;
    X11WindowReader& operator=(const X11WindowReader&) = delete;

    const X11Stacking& stacking() const { return stacking_; }
    const X11WindowProperties& properties() const { return properties_; }
    const X11RootProperties& root() const { return root_; }
    const X11FrameGeometryReader& frames() const { return frames_; }

    // Number, owner, layer, visible frame and application (the WM_CLASS class) of each window,
    // in the same order; every question is asked before the first answer is awaited.
    std::vector<WindowDescription> describe(const std::vector<StackedWindow>& windows) const;

    std::optional<std::vector<StackedWindow>> stackedWindows() const {
        return stacking_.stackedWindows();
    }
    std::optional<Rect> outerFrame(xcb_window_t client) const { return frames_.outerFrame(client); }
    std::vector<std::uint32_t> cardinalsOf(xcb_window_t window, xcb_atom_t property,
                                           std::uint32_t maxCount) const {
        return properties_.cardinalsOf(window, property, maxCount);
    }

  private:
    X11WindowProperties properties_;
    X11RootProperties root_;
    X11Stacking stacking_;
    X11FrameGeometryReader frames_;
};

}  // namespace gf
