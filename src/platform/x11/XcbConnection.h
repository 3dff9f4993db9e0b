#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/x11/X11Atoms.h"

namespace gf {

// One connection to the X server, closed on destruction, with the default
// screen and the interned atoms.
class XcbConnection {
    struct Key;  // only open() constructs connections

  public:
    using Handle = std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)>;

    // Connects to the named display ($DISPLAY when displayName is null or
    // empty). Returns nullptr and a one-line reason when the display cannot be
    // reached. Atoms already interned on another connection are reused.
    static std::unique_ptr<XcbConnection> open(const char* displayName, std::string* error,
                                               const X11Atoms* knownAtoms = nullptr);

    XcbConnection(const Key&, Handle connection, xcb_screen_t* screen, X11Atoms atoms);
    XcbConnection(const XcbConnection&) = delete;
    XcbConnection& operator=(const XcbConnection&) = delete;
    ~XcbConnection();

    xcb_connection_t* get() const { return connection_.get(); }
    xcb_window_t root() const { return screen_->root; }
    const xcb_screen_t& screen() const { return *screen_; }
    const X11Atoms& atoms() const { return atoms_; }

    bool hasError() const { return xcb_connection_has_error(connection_.get()) != 0; }
    bool hasExtension(xcb_extension_t* extension) const;
    void flush() const { xcb_flush(connection_.get()); }

    // Sends a client message about a window to the root, where the window
    // manager listens, and waits for the server to accept it.
    bool sendToWindowManager(xcb_window_t window, xcb_atom_t type,
                             const std::array<std::uint32_t, 5>& data) const;
    // The same without waiting, and left for the next flush: for a request
    // repeated many times a second, whose effect shows on the screen anyway.
    // A message to the root cannot fail, whatever window it names.
    void postToWindowManager(xcb_window_t window, xcb_atom_t type,
                             const std::array<std::uint32_t, 5>& data) const;

    // Drops events and errors that nobody reads. A connection that only sends
    // requests still receives X errors of unchecked requests as events, and
    // they would pile up in its queue otherwise.
    void discardQueuedEvents() const;

  private:
    Handle connection_;
    xcb_screen_t* screen_;  // part of the connection's setup data
    X11Atoms atoms_;
};

}  // namespace gf
