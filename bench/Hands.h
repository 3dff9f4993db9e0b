#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "x11/XTestDriver.h"

namespace gf::bench {

// The user's hands, played through XTest on a connection of their own so that
// a burst of motion never waits behind the checks the bench makes elsewhere.
// Keys and buttons wait until the server has taken them; motion does not.
class Hands {
    struct Key;

  public:
    static std::unique_ptr<Hands> open(const std::string& displayName, std::string* error);

    Hands(const Key&, xcb_connection_t* connection);
    Hands(const Hands&) = delete;
    Hands& operator=(const Hands&) = delete;
    ~Hands();

    void pressKey(std::uint32_t keysym) { driver_->pressKey(keysym); }
    void releaseKey(std::uint32_t keysym) { driver_->releaseKey(keysym); }
    void pressButton(int button) { driver_->pressButton(button); }
    void releaseButton(int button) { driver_->releaseButton(button); }

    // Sends a key press at once without waiting for the server, so that the
    // moment it leaves is known to within the cost of one write; false when
    // no key of the keyboard produces the keysym.
    bool sendKeyPress(std::uint32_t keysym);
    // Sends the motion at once without waiting for the server.
    void moveTo(int x, int y);
    // The same as a mouse reports it: by an offset from wherever the pointer is.
    void moveBy(int dx, int dy);
    // Waits until everything sent has been processed.
    void sync() { driver_->sync(); }

  private:
    void fakeMotion(bool relative, int x, int y);
    std::uint8_t keycodeOf(std::uint32_t keysym) const;

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::unique_ptr<test::XTestDriver> driver_;
    // The keyboard mapping, read once: looking a key up must not cost a round trip.
    std::uint8_t firstKeycode_ = 0;
    int keysymsPerKeycode_ = 0;
    std::vector<xcb_keysym_t> keysyms_;
};

}  // namespace gf::bench
