#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/x11/XcbConnection.h"

namespace gf::test {

namespace Keysym {
inline constexpr std::uint32_t shiftL = 0xffe1;
inline constexpr std::uint32_t controlL = 0xffe3;
inline constexpr std::uint32_t altL = 0xffe9;
inline constexpr std::uint32_t superL = 0xffeb;
inline constexpr std::uint32_t capsLock = 0xffe5;
inline constexpr std::uint32_t escape = 0xff1b;
}  // namespace Keysym

// XTest input; calls return once the server processed them but send… ones, timed by the bench.
class XTestDriver {
  public:
    XTestDriver(xcb_connection_t* connection, std::uint32_t root);
    // On a connection of its own, so input never waits behind other requests.
    static std::unique_ptr<XTestDriver> connect(const std::string& displayName, std::string* error);

    void pressKey(std::uint32_t keysym) { fakeInput(XCB_KEY_PRESS, keycodeOf(keysym), 0, 0); }
    void releaseKey(std::uint32_t keysym) { fakeInput(XCB_KEY_RELEASE, keycodeOf(keysym), 0, 0); }
    void movePointerTo(int x, int y) { fakeInput(XCB_MOTION_NOTIFY, 0, x, y); }
    void movePointerBy(int dx, int dy) { fakeInput(XCB_MOTION_NOTIFY, 1, dx, dy); }
    void pressButton(int button) { fakeInput(XCB_BUTTON_PRESS, std::uint8_t(button), 0, 0); }
    void releaseButton(int button) { fakeInput(XCB_BUTTON_RELEASE, std::uint8_t(button), 0, 0); }

    bool sendKeyPress(std::uint32_t keysym);
    void sendPointerTo(int x, int y) { sendInput(XCB_MOTION_NOTIFY, 0, x, y); }
    // By an offset, as a mouse reports motion.
    void sendPointerBy(int dx, int dy) { sendInput(XCB_MOTION_NOTIFY, 1, dx, dy); }

    void sync();  // a round trip
    std::uint8_t keycodeOf(std::uint32_t keysym) const;

  private:
    void fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y);
    void sendInput(std::uint8_t type, std::uint8_t detail, int x, int y);
    std::uint8_t findKeycode(std::uint32_t keysym) const;

    std::unique_ptr<XcbConnection> ownConnection_;
    xcb_connection_t* connection_;
    std::uint32_t root_;
    // Read once, so that looking a key up costs no round trip.
    std::uint8_t firstKeycode_ = 0;
    std::size_t keysymsPerKeycode_ = 0;
    std::vector<std::uint32_t> keysyms_;
};

}  // namespace gf::test
