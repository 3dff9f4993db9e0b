#include "Hands.h"

#include <xcb/xtest.h>

#include "platform/x11/XcbReply.h"

namespace gf::bench {

struct Hands::Key {};

std::unique_ptr<Hands> Hands::open(const std::string& displayName, std::string* error) {
    xcb_connection_t* connection = xcb_connect(displayName.c_str(), nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        *error = "cannot connect to " + displayName + " to play input";
        return nullptr;
    }
    return std::make_unique<Hands>(Key{}, connection);
}

Hands::Hands(const Key&, xcb_connection_t* connection)
    : connection_(connection),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root),
      driver_(std::make_unique<test::XTestDriver>(connection, root_)) {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    firstKeycode_ = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    if (auto mapping = xcbReply(connection_, xcb_get_keyboard_mapping_reply,
                                xcb_get_keyboard_mapping(connection_, firstKeycode_, count))) {
        const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
        keysyms_.assign(keysyms, keysyms + xcb_get_keyboard_mapping_keysyms_length(mapping.get()));
        keysymsPerKeycode_ = mapping->keysyms_per_keycode;
    }
}

Hands::~Hands() {
    driver_.reset();
    xcb_disconnect(connection_);
}

bool Hands::sendKeyPress(std::uint32_t keysym) {
    const std::uint8_t keycode = keycodeOf(keysym);
    if (keycode == 0) {
        return false;
    }
    xcb_test_fake_input(connection_, XCB_KEY_PRESS, keycode, XCB_CURRENT_TIME, root_, 0, 0, 0);
    xcb_flush(connection_);
    return true;
}

void Hands::moveTo(int x, int y) {
    fakeMotion(false, x, y);
}

void Hands::moveBy(int dx, int dy) {
    fakeMotion(true, dx, dy);
}

void Hands::fakeMotion(bool relative, int x, int y) {
    xcb_test_fake_input(connection_, XCB_MOTION_NOTIFY, relative ? 1 : 0, XCB_CURRENT_TIME, root_,
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    xcb_flush(connection_);
}

std::uint8_t Hands::keycodeOf(std::uint32_t keysym) const {
    if (keysymsPerKeycode_ <= 0) {
        return 0;
    }
    const auto perKeycode = static_cast<std::size_t>(keysymsPerKeycode_);
    for (std::size_t i = 0; i < keysyms_.size(); ++i) {
        if (keysyms_[i] == keysym) {
            return static_cast<std::uint8_t>(firstKeycode_ + i / perKeycode);
        }
    }
    return 0;
}

}  // namespace gf::bench
