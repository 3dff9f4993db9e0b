#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

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
// the user did it. Every call returns once the server has processed it, but
// those named send…, which leave at once, so that the moment input leaves is
// known to within the cost of one write.
class XTestDriver {
  public:
    XTestDriver(xcb_connection_t* connection, std::uint32_t root);
    // On a connection of its own, so that a burst of input never waits behind
    // requests made elsewhere; nullptr with a reason when it cannot connect.
    static std::unique_ptr<XTestDriver> connect(const std::string& displayName, std::string* error);
    XTestDriver(const XTestDriver&) = delete;
    XTestDriver& operator=(const XTestDriver&) = delete;
    ~XTestDriver();

    void pressKey(std::uint32_t keysym);
    void releaseKey(std::uint32_t keysym);

    void movePointerTo(int x, int y);
    void movePointerBy(int dx, int dy);
    void pressButton(int button);  // 1 = left
    void releaseButton(int button);

    // False when no key of the keyboard produces the keysym.
    bool sendKeyPress(std::uint32_t keysym);
    void sendPointerTo(int x, int y);
    // As a mouse reports motion: by an offset from wherever the pointer is.
    void sendPointerBy(int dx, int dy);

    // A round trip: everything sent before has been processed by the server.
    void sync();

    // The key that types the keysym; throws when no key does.
    std::uint8_t keycodeOf(std::uint32_t keysym) const;

  private:
    void fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y);
    void sendInput(std::uint8_t type, std::uint8_t detail, int x, int y);
    std::uint8_t findKeycode(std::uint32_t keysym) const;

    xcb_connection_t* connection_;
    std::uint32_t root_;
    bool ownsConnection_ = false;
    // The keyboard mapping, read once: looking a key up must not cost a round trip.
    std::uint8_t firstKeycode_ = 0;
    std::size_t keysymsPerKeycode_ = 0;
    std::vector<std::uint32_t> keysyms_;
};

}  // namespace gf::test
