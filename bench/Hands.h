#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <string>

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

    // Sends the motion at once without waiting for the server.
    void moveTo(int x, int y);
    // Waits until everything sent has been processed.
    void sync() { driver_->sync(); }

  private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::unique_ptr<test::XTestDriver> driver_;
};

}  // namespace gf::bench
