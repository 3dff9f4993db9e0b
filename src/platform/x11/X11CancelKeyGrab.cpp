#include "platform/x11/X11CancelKeyGrab.h"

#include <algorithm>
#include <cstdint>

#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

constexpr xcb_keysym_t kEscapeKeysym = 0xff1b;
// The eight modifier bits: Shift, Lock, Control and Mod1 to Mod5.
constexpr std::uint16_t kModifierCombinations = 0x100;

}  // namespace

// With any modifiers at all, so that Escape pressed with the gesture's keys is taken whatever
// else is held, Caps Lock and Num Lock included. Another client holding one of those
// combinations makes the whole request fail; then each combination is taken on its own, all
// but that client's.
void X11CancelKeyGrab::grab() {
    xcb_connection_t* c = connection_.get();
    keycodes_ = keycodesOf(kEscapeKeysym);
    for (const xcb_keycode_t key : keycodes_) {
        if (xcbSucceeded(c, xcb_grab_key_checked(c, 0, connection_.root(), XCB_MOD_MASK_ANY, key,
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC))) {
            continue;
        }
        for (std::uint16_t modifiers = 0; modifiers < kModifierCombinations; ++modifiers) {
            // Refusals arrive as errors, which the event pump drops.
            xcb_grab_key(c, 0, connection_.root(), modifiers, key, XCB_GRAB_MODE_ASYNC,
                         XCB_GRAB_MODE_ASYNC);
        }
    }
    grabbed_ = true;
}

void X11CancelKeyGrab::release() {
    for (const xcb_keycode_t key : keycodes_) {
        xcb_ungrab_key(connection_.get(), key, connection_.root(), XCB_MOD_MASK_ANY);
    }
    keycodes_.clear();
    grabbed_ = false;
}

bool X11CancelKeyGrab::isGrabbedKey(xcb_keycode_t keycode) const {
    return std::find(keycodes_.begin(), keycodes_.end(), keycode) != keycodes_.end();
}

std::vector<xcb_keycode_t> X11CancelKeyGrab::keycodesOf(xcb_keysym_t keysym) const {
    xcb_connection_t* c = connection_.get();
    const xcb_setup_t* setup = xcb_get_setup(c);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    auto reply =
        xcbReply(c, xcb_get_keyboard_mapping_reply,
                 xcb_get_keyboard_mapping(c, setup->min_keycode, static_cast<std::uint8_t>(count)));
    std::vector<xcb_keycode_t> keycodes;
    if (!reply || reply->keysyms_per_keycode == 0) {
        return keycodes;
    }
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(reply.get());
    const int length = xcb_get_keyboard_mapping_keysyms_length(reply.get());
    for (int i = 0; i < length; ++i) {
        const auto keycode =
            static_cast<xcb_keycode_t>(setup->min_keycode + i / reply->keysyms_per_keycode);
        if (keysyms[i] == keysym &&
            std::find(keycodes.begin(), keycodes.end(), keycode) == keycodes.end()) {
            keycodes.push_back(keycode);
        }
    }
    return keycodes;
}

}  // namespace gf
