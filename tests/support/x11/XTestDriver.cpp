#include "x11/XTestDriver.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <stdexcept>
#include <string>

#include "platform/x11/XcbReply.h"

namespace gf::test {

XTestDriver::XTestDriver(xcb_connection_t* connection, std::uint32_t root)
    : connection_(connection), root_(root) {}

std::uint8_t XTestDriver::keycodeOf(std::uint32_t keysym) {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    auto mapping = xcbReply(connection_, xcb_get_keyboard_mapping_reply,
                            xcb_get_keyboard_mapping(connection_, setup->min_keycode,
                                                     static_cast<std::uint8_t>(count)));
    if (!mapping) {
        throw std::runtime_error("cannot read the keyboard mapping");
    }
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const int perKeycode = mapping->keysyms_per_keycode;
    for (int key = 0; key < count; ++key) {
        for (int column = 0; column < perKeycode; ++column) {
            if (keysyms[key * perKeycode + column] == keysym) {
                return static_cast<std::uint8_t>(setup->min_keycode + key);
            }
        }
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

void XTestDriver::pressKey(std::uint32_t keysym) {
    fakeInput(XCB_KEY_PRESS, keycodeOf(keysym), 0, 0);
}

void XTestDriver::releaseKey(std::uint32_t keysym) {
    fakeInput(XCB_KEY_RELEASE, keycodeOf(keysym), 0, 0);
}

void XTestDriver::movePointerTo(int x, int y) {
    fakeInput(XCB_MOTION_NOTIFY, 0, x, y);
}

void XTestDriver::movePointerBy(int dx, int dy) {
    fakeInput(XCB_MOTION_NOTIFY, 1, dx, dy);
}

void XTestDriver::pressButton(int button) {
    fakeInput(XCB_BUTTON_PRESS, static_cast<std::uint8_t>(button), 0, 0);
}

void XTestDriver::releaseButton(int button) {
    fakeInput(XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button), 0, 0);
}

void XTestDriver::sync() {
    XcbPointer<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace gf::test
