// The one key the backend ever grabs: Escape on the root, with any modifiers, only while a tap
// captures it.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "X11PlatformTest.h"
#include "platform/InputService.h"
#include "platform/x11/XcbReply.h"

namespace gf::test {
namespace {

class CancelKeyTest : public X11PlatformTest {
  protected:
    void SetUp() override {
        X11PlatformTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        input().movePointerTo(300, 200);
        tap_ = platform_->input().createEventTap(
            [this](const InputEvent& event) { events_.push_back(event); });
        ASSERT_NE(tap_, nullptr);
        syncBackend();
    }

    // Requests on one connection are handled in order: after this answer the backend's grabs
    // are in place on the server.
    void syncBackend() { platform_->input().currentPointerPosition(); }

    // Whether some other client holds Escape with some modifiers: the server refuses the same
    // grab to this one then.
    bool escapeTakenElsewhere() {
        syncBackend();
        xcb_connection_t* c = desktop().connection();
        const xcb_keycode_t escape = input().keycodeOf(Keysym::escape);
        if (!xcbSucceeded(c, xcb_grab_key_checked(c, 0, desktop().root(), XCB_MOD_MASK_ANY, escape,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC))) {
            return true;
        }
        xcb_ungrab_key(c, escape, desktop().root(), XCB_MOD_MASK_ANY);
        xcb_flush(c);
        return false;
    }

    void tapEscape() {
        input().pressKey(Keysym::escape);
        input().releaseKey(Keysym::escape);
    }

    int cancelPresses(std::uint64_t flags) const {
        return static_cast<int>(
            std::count(events_.begin(), events_.end(),
                       InputEvent{InputEventType::cancelKeyPressed, flags, Point{300, 200}}));
    }

    std::unique_ptr<EventTap> tap_;
    std::vector<InputEvent> events_;
};

TEST_F(CancelKeyTest, EscapeIsTakenWithAnyModifiersOnlyWhileAnEnabledTapCapturesIt) {
    EXPECT_FALSE(escapeTakenElsewhere());
    tap_->setCancelKeyCaptured(true);
    EXPECT_TRUE(escapeTakenElsewhere());

    // Caps Lock on and Shift held count as much as nothing held.
    input().pressKey(Keysym::capsLock);
    input().releaseKey(Keysym::capsLock);
    input().pressKey(Keysym::shiftL);
    tapEscape();
    input().releaseKey(Keysym::shiftL);
    input().pressKey(Keysym::capsLock);
    input().releaseKey(Keysym::capsLock);
    tapEscape();
    EXPECT_TRUE(waitUntil([&] { return cancelPresses(0) == 1; }));
    EXPECT_EQ(cancelPresses(ModifierFlag::shift), 1);

    tap_->setEnabled(false);
    EXPECT_FALSE(escapeTakenElsewhere()) << "disabled";
    tap_->setEnabled(true);
    EXPECT_TRUE(escapeTakenElsewhere());
    tap_->setCancelKeyCaptured(false);
    EXPECT_FALSE(escapeTakenElsewhere()) << "no longer captured";
    tap_->setCancelKeyCaptured(true);
    tap_.reset();
    EXPECT_FALSE(escapeTakenElsewhere()) << "removed";
}

TEST_F(CancelKeyTest, ACombinationAnotherClientHoldsStaysItsOwn) {
    xcb_connection_t* c = desktop().connection();
    const xcb_keycode_t escape = input().keycodeOf(Keysym::escape);
    ASSERT_TRUE(
        xcbSucceeded(c, xcb_grab_key_checked(c, 0, desktop().root(), XCB_MOD_MASK_SHIFT, escape,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    tap_->setCancelKeyCaptured(true);
    syncBackend();

    tapEscape();
    input().pressKey(Keysym::controlL);
    tapEscape();
    input().releaseKey(Keysym::controlL);
    input().pressKey(Keysym::shiftL);
    tapEscape();
    input().releaseKey(Keysym::shiftL);
    EXPECT_TRUE(waitUntil(
        [&] { return cancelPresses(0) == 1 && cancelPresses(ModifierFlag::control) == 1; }));
    int pressesElsewhere = 0;
    EXPECT_TRUE(waitUntil([&] {
        while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(c)}) {
            pressesElsewhere += (event->response_type & 0x7f) == XCB_KEY_PRESS ? 1 : 0;
        }
        return pressesElsewhere == 1;
    }));
    EXPECT_EQ(cancelPresses(ModifierFlag::shift), 0);
}

}  // namespace
}  // namespace gf::test
