#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace gf::test {

// Keysyms of the keys the tests press.
namespace Keysym {
inline constexpr std::uint32_t shiftL = 0xffe1;
inline constexpr std::uint32_t controlL = 0xffe3;
inline constexpr std::uint32_t altL = 0xffe9;
inline constexpr std::uint32_t superL = 0xffeb;
inline constexpr std::uint32_t capsLock = 0xffe5;
inline constexpr std::uint32_t escape = 0xff1b;
}  // namespace Keysym

// Plays keyboard and pointer input into the X server through XTest, as if
// the user did it. Every call returns once the server has processed it.
class XTestDriver {
  public:
    XTestDriver(xcb_connection_t* connection, std::uint32_t root);

    void pressKey(std::uint32_t keysym);
    void releaseKey(std::uint32_t keysym);

    void movePointerTo(int x, int y);
    void movePointerBy(int dx, int dy);
    void pressButton(int button);  // 1 = left
    void releaseButton(int button);

    // A round trip: everything sent before has been processed by the server.
    void sync();

    // The key that types the keysym; throws when no key does.
    std::uint8_t keycodeOf(std::uint32_t keysym);

  private:
    void fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y);

    xcb_connection_t* connection_;
    std::uint32_t root_;
};

}  // namespace gf::test
