#include "x11/XTestDriver.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <stdexcept>
#include <string>

#include "platform/x11/XcbReply.h"

namespace gf::test {

XTestDriver::XTestDriver(xcb_connection_t* connection, std::uint32_t root)
    : connection_(connection), root_(root) {
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

std::unique_ptr<XTestDriver> XTestDriver::connect(const std::string& displayName,
                                                  std::string* error) {
    auto connection = XcbConnection::open(displayName.c_str(), error);
    if (!connection) {
        return nullptr;
    }
    auto driver = std::make_unique<XTestDriver>(connection->get(), connection->root());
    driver->ownConnection_ = std::move(connection);
    return driver;
}

std::uint8_t XTestDriver::findKeycode(std::uint32_t keysym) const {
    for (std::size_t i = 0; keysymsPerKeycode_ > 0 && i < keysyms_.size(); ++i) {
        if (keysyms_[i] == keysym) {
            return static_cast<std::uint8_t>(firstKeycode_ + i / keysymsPerKeycode_);
        }
    }
    return 0;
}

std::uint8_t XTestDriver::keycodeOf(std::uint32_t keysym) const {
    if (const std::uint8_t keycode = findKeycode(keysym); keycode != 0) {
        return keycode;
    }
    throw std::runtime_error("no key produces keysym " + std::to_string(keysym));
}

void XTestDriver::fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y) {
    const bool accepted = xcbSucceeded(
        connection_,
        xcb_test_fake_input_checked(connection_, type, detail, XCB_CURRENT_TIME, root_,
                                    static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0));
    if (!accepted) {
        throw std::runtime_error("the X server refused an XTest request");
    }
}

void XTestDriver::sendInput(std::uint8_t type, std::uint8_t detail, int x, int y) {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_,
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    xcb_flush(connection_);
}

bool XTestDriver::sendKeyPress(std::uint32_t keysym) {
    const std::uint8_t keycode = findKeycode(keysym);
    if (keycode != 0) {
        sendInput(XCB_KEY_PRESS, keycode, 0, 0);
    }
    return keycode != 0;
}

void XTestDriver::sync() {
    XcbPointer<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace gf::test
