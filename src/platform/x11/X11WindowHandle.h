#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/WindowHandle.h"
#include "platform/x11/X11ConfigureWatch.h"
#include "platform/x11/X11FrameGeometryReader.h"
#include "platform/x11/X11WindowRaiser.h"

namespace gf {

class X11RestackPolicy;
class X11WindowReader;
class XcbConnection;

// A client window reached through a connection that never reads events, so
// it may be used from any thread while the main thread reads input.
class X11WindowHandle final : public WindowHandle {
  public:
    // managedByEwmh: an EWMH window manager runs, so geometry and stacking
    // changes are asked of it rather than made directly.
    X11WindowHandle(const XcbConnection& connection, const X11WindowReader& reader,
                    X11RestackPolicy& restackPolicy, xcb_window_t client, bool managedByEwmh);
    ~X11WindowHandle() override;
    X11WindowHandle(const X11WindowHandle&) = delete;
    X11WindowHandle& operator=(const X11WindowHandle&) = delete;

    std::optional<std::uint32_t> windowNumber() const override { return client_; }

    std::optional<Point> position() override;
    std::optional<Size> size() override;
    std::optional<bool> isSizeSettable() override;
    bool setPosition(Point topLeft) override;
    bool setSize(Size size) override;
    void settle() override;
    bool raise() override;
    bool makeMain() override;
    bool restoreFrame(Rect frame) override;
    WindowState state() override;
    bool setMaximized(bool horizontally, bool vertically) override;

  private:
    bool requestFrame(Point frameTopLeft, Size clientSize);
    bool isRequestRepeated(Point frameTopLeft, Size clientSize) const;
    // Asks for the frame geometry; finds the frame window first when it is not known.
    std::optional<X11FrameGeometryReader::Cookies> requestPlacement();
    // The frame geometry from the replies; the shadow's comes already received, or null when it
    // was answered with an error.
    std::optional<X11FrameGeometry> collectPlacement(const X11FrameGeometryReader::Cookies& cookies,
                                                     const xcb_get_property_reply_t* shadow);
    // What a write needs to know; waits for the server only on the first write.
    std::optional<X11FrameGeometry> placementForWrite();
    // Asks for the placement the next write will use, and sends what is queued.
    void readAheadAndFlush();
    // Forgets the placement read and the requests made, for a window the window manager is
    // about to give another frame: the next write reads afresh.
    void forgetPlacement();

    const XcbConnection& connection_;
    const X11WindowReader& reader_;
    const xcb_window_t client_;
    const bool managedByEwmh_;

    // What this handle asked for last: the decorated frame's corner and the client's size. The
    // window manager applies requests later, so a position change right after a size change must
    // repeat the asked size rather than the one still on the screen.
    mutable std::mutex mutex_;
    std::optional<Point> requestedFramePosition_;
    std::optional<Size> requestedClientSize_;
    // The frame position and client size of the last request sent.
    std::optional<std::pair<Point, Size>> lastRequest_;

    // The placement as last read, and the read on its way for the next write.
    std::mutex readMutex_;
    std::optional<X11FrameGeometry> knownPlacement_;
    std::optional<X11FrameGeometryReader::Cookies> pendingRead_;
    std::chrono::steady_clock::time_point lastReadAhead_;
    // The window manager's frame holding the client, or the client itself.
    std::optional<xcb_window_t> frameWindow_;
    // Holds a move's next write back until the window manager has carried out the last one.
    X11ConfigureWatch configureWatch_;
    // The frame corner of a write held back, sent by the next write or by settle().
    std::optional<Point> heldBack_;
    X11WindowRaiser raiser_;
};

}  // namespace gf
