#include <gtest/gtest.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <array>

#include "X11PlatformTest.h"
#include "platform/InputService.h"
#include "platform/x11/XcbReply.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class InputServiceTest : public X11PlatformTest {
  protected:
    void SetUp() override {
        X11PlatformTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        input().movePointerTo(300, 200);
    }

    InputService& service() { return platform_->input(); }

    std::unique_ptr<EventTap> recordingTap() {
        auto tap =
            service().createEventTap([this](const InputEvent& event) { events_.push_back(event); });
        syncBackend();
        return tap;
    }
    std::unique_ptr<EventTap> motionTap() {
        auto tap = recordingTap();
        if (tap) {
            tap->setPointerMotionWanted(true);
            syncBackend();
        }
        return tap;
    }

    // Requests on one connection are handled in order: after this answer the backend's event
    // selections are in place on the server.
    void syncBackend() { service().currentPointerPosition(); }

    // Presses and releases `key`, with `held` down around it when given.
    void tapKey(std::uint32_t key, std::optional<std::uint32_t> held = {}) {
        if (held) {
            input().pressKey(*held);
        }
        input().pressKey(key);
        input().releaseKey(key);
        if (held) {
            input().releaseKey(*held);
        }
    }

    bool receivedType(InputEventType type) const {
        return std::ranges::any_of(events_, [type](const InputEvent& e) { return e.type == type; });
    }

    bool receivedEvent(const InputEvent& expected) {
        return waitUntil([&] { return std::ranges::find(events_, expected) != events_.end(); });
    }

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
        // Waited for: the backend's next grab must not meet this one still in place.
        EXPECT_TRUE(
            xcbSucceeded(c, xcb_ungrab_key_checked(c, escape, desktop().root(), XCB_MOD_MASK_ANY)));
        return false;
    }

    int cancelPresses(std::uint64_t flags) const {
        const InputEvent press{InputEventType::cancelKeyPressed, flags, Point{300, 200}};
        return static_cast<int>(std::ranges::count(events_, press));
    }

    std::vector<InputEvent> events_;
};

TEST_F(InputServiceTest, MotionArrivesOnlyWhileWantedAndEnabledAndMonitorsSeeTheFlags) {
    auto tap = motionTap();
    ASSERT_NE(tap, nullptr);
    input().movePointerTo(410, 320);
    EXPECT_TRUE(receivedEvent({InputEventType::mouseMoved, 0, {410, 320}}));
    input().movePointerBy(30, 10);
    EXPECT_TRUE(receivedEvent({InputEventType::mouseMoved, 0, {440, 330}}));
    EXPECT_EQ(service().currentPointerPosition(), (Point{440, 330}));

    // With the left button down the motion is a drag; held keys show in the flags.
    input().pressKey(Keysym::controlL);
    input().pressButton(1);
    input().movePointerBy(-40, 5);
    EXPECT_TRUE(
        receivedEvent({InputEventType::leftMouseDragged, ModifierFlag::control, {400, 335}}));
    input().releaseButton(1);
    // Read after a later key change, the pointer may already be past it: the events before the
    // change never carry that position, so a gesture the change ends never gets there.
    processEventsFor(100ms);
    events_.clear();
    input().movePointerBy(20, 0);
    input().releaseKey(Keysym::controlL);
    input().movePointerBy(20, 0);
    processEventsFor(200ms);
    const auto released =
        std::ranges::find(events_, InputEventType::flagsChanged, &InputEvent::type);
    ASSERT_NE(released, events_.end());
    EXPECT_TRUE(std::none_of(events_.begin(), released, [](const InputEvent& e) {
        return e.location == Point{440, 335};
    }));

    // A disabled tap receives nothing at all; one no longer wanting motion only misses motion.
    tap->setEnabled(false);
    syncBackend();
    events_.clear();
    tapKey(Keysym::controlL);
    input().movePointerTo(500, 500);
    processEventsFor(200ms);
    EXPECT_TRUE(events_.empty());
    tap->setEnabled(true);
    tap->setPointerMotionWanted(false);
    syncBackend();
    input().movePointerTo(100, 100);
    processEventsFor(200ms);
    EXPECT_FALSE(receivedType(InputEventType::mouseMoved));

    // A pointer-moved monitor reports the held flags until it is removed.
    std::vector<std::uint64_t> reported;
    auto monitor = service().addPointerMovedMonitor([&](auto flags) { reported.push_back(flags); });
    ASSERT_NE(monitor, nullptr);
    syncBackend();
    input().pressKey(Keysym::altL);
    input().movePointerTo(600, 400);
    EXPECT_TRUE(waitUntil([&] { return !reported.empty(); }));
    EXPECT_EQ(reported.back(), ModifierFlag::option);
    input().releaseKey(Keysym::altL);

    monitor.reset();
    reported.clear();
    input().movePointerTo(610, 400);
    processEventsFor(200ms);
    EXPECT_TRUE(reported.empty());
}

TEST_F(InputServiceTest, EventsArriveWhileAnotherClientGrabsUntilAMasterDeviceIsAdded) {
    auto tap = motionTap();
    ASSERT_NE(tap, nullptr);
    xcb_connection_t* c = desktop().connection();
    auto keyboard = xcbReply(c, xcb_grab_keyboard_reply,
                             xcb_grab_keyboard(c, 0, desktop().root(), XCB_CURRENT_TIME,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    auto pointer = xcbReply(
        c, xcb_grab_pointer_reply,
        xcb_grab_pointer(c, 0, desktop().root(), XCB_EVENT_MASK_POINTER_MOTION, XCB_GRAB_MODE_ASYNC,
                         XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME));
    ASSERT_TRUE(keyboard && keyboard->status == XCB_GRAB_STATUS_SUCCESS);
    ASSERT_TRUE(pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS);

    input().pressKey(Keysym::superL);
    EXPECT_TRUE(receivedEvent({InputEventType::flagsChanged, ModifierFlag::command, {300, 200}}));
    input().movePointerTo(350, 250);
    EXPECT_TRUE(receivedEvent({InputEventType::mouseMoved, ModifierFlag::command, {350, 250}}));
    input().releaseKey(Keysym::superL);

    // A new master device interrupts the tap until it is enabled again, grabs or not.
    // XIChangeHierarchy with one AddMaster entry named "extra".
    struct AddMaster {
        xcb_input_add_master_t header;
        std::array<char, 8> name;
    };
    const AddMaster change{
        {XCB_INPUT_HIERARCHY_CHANGE_TYPE_ADD_MASTER, sizeof(AddMaster) / 4, 5, 1, 1},
        {'e', 'x', 't', 'r', 'a'}};
    ASSERT_TRUE(
        xcbSucceeded(c, xcb_input_xi_change_hierarchy_checked(
                            c, 1, reinterpret_cast<const xcb_input_hierarchy_change_t*>(&change))));

    EXPECT_TRUE(waitUntil([&] { return receivedType(InputEventType::tapDisabledByTimeout); }));
    EXPECT_FALSE(tap->isEnabled());
    events_.clear();
    input().movePointerTo(250, 250);
    processEventsFor(100ms);
    EXPECT_TRUE(events_.empty());

    tap->setEnabled(true);
    syncBackend();
    input().movePointerTo(260, 250);
    EXPECT_TRUE(receivedEvent({InputEventType::mouseMoved, 0, {260, 250}}));
}

// The one key the backend ever grabs: Escape on the root, with any modifiers, only while a tap
// captures it, and never a combination another client holds.
TEST_F(InputServiceTest, EscapeIsTakenWithAnyModifiersOnlyWhileAnEnabledTapCapturesIt) {
    auto tap = recordingTap();
    ASSERT_NE(tap, nullptr);
    EXPECT_FALSE(escapeTakenElsewhere());
    tap->setCancelKeyCaptured(true);
    EXPECT_TRUE(escapeTakenElsewhere());

    // Caps Lock on and Shift held count as much as nothing held.
    tapKey(Keysym::capsLock);
    tapKey(Keysym::escape, Keysym::shiftL);
    tapKey(Keysym::capsLock);
    tapKey(Keysym::escape);
    EXPECT_TRUE(waitUntil([&] { return cancelPresses(0) == 1; }));
    EXPECT_EQ(cancelPresses(ModifierFlag::shift), 1);

    tap->setEnabled(false);
    EXPECT_FALSE(escapeTakenElsewhere()) << "disabled";
    tap->setEnabled(true);
    EXPECT_TRUE(escapeTakenElsewhere());
    tap->setCancelKeyCaptured(false);
    EXPECT_FALSE(escapeTakenElsewhere()) << "no longer captured";
    tap->setCancelKeyCaptured(true);
    tap.reset();
    EXPECT_FALSE(escapeTakenElsewhere()) << "removed";

    // Shift + Escape, held by another client, stays its own.
    xcb_connection_t* c = desktop().connection();
    const xcb_keycode_t escape = input().keycodeOf(Keysym::escape);
    ASSERT_TRUE(
        xcbSucceeded(c, xcb_grab_key_checked(c, 0, desktop().root(), XCB_MOD_MASK_SHIFT, escape,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    ASSERT_NE(tap = recordingTap(), nullptr);
    tap->setCancelKeyCaptured(true);
    syncBackend();
    events_.clear();

    tapKey(Keysym::escape);
    tapKey(Keysym::escape, Keysym::controlL);
    tapKey(Keysym::escape, Keysym::shiftL);
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
