#include "engine/EventTapManager.h"

#include "EngineTest.h"
#include "TestHelpers.h"
#include "model/DebugLog.h"

namespace gf::test {
namespace {

constexpr std::uint64_t kMove = ModifierFlag::control | ModifierFlag::command;
constexpr std::uint64_t kResize = ModifierFlag::control | ModifierFlag::option;
constexpr Rect kFrame{100, 100, 400, 300};

enum class Gesture { none, move, resize };

class EventTapManagerTest : public EngineTest {
  protected:
    EventTapManagerTest() {
        setDebugLogPath(dir.filePath("glimmerfold.log").toStdString());
        settings.setMagneticsEnabled(false);  // snapping would blur where the pointer put it
    }

    int logCount(const char* line) const {
        return static_cast<int>(fileContents(dir.filePath("glimmerfold.log")).count(line));
    }

    Gesture gesture() const {
        const DragSession& s = manager.dragSession();
        return s.isDragging() ? Gesture::move : s.isResizing() ? Gesture::resize : Gesture::none;
    }

    EventTapManager manager{settings, platform};
    std::uint32_t window =
        desktop.addWindow(Window::at(kFrame).withIdentifier("org.example.Editor"));
};

TEST_F(EventTapManagerTest, StartsOnceStopsHarmlesslyAndRetriesAfterAFailure) {
    desktop.tapCreationFails = true;
    manager.start();
    EXPECT_FALSE(manager.hasEventTap());
    EXPECT_EQ(logCount("[EventTap] FAILED to create event tap. Check that this is an X11 session "
                       "whose server offers XKEYBOARD and XInput 2.1."),
              1);

    desktop.tapCreationFails = false;
    manager.start();
    manager.start();
    EXPECT_TRUE(manager.hasEventTap());
    EXPECT_TRUE(desktop.isEventTapEnabled());
    EXPECT_EQ(desktop.tapsCreated, 1u);
    EXPECT_EQ(logCount("[EventTap] Created and enabled successfully."), 1);

    manager.stop();
    manager.stop();
    EXPECT_FALSE(manager.hasEventTap());
    EXPECT_FALSE(desktop.hasEventTap());
    desktop.advance(20s);  // no timer of the stopped manager may fire

    manager.start();
    EXPECT_TRUE(desktop.hasEventTap());

    // Stopping also ends the gesture in progress.
    desktop.movePointer({200, 200});
    desktop.pressModifiers(kResize);
    ASSERT_EQ(gesture(), Gesture::resize);
    manager.stop();
    EXPECT_EQ(gesture(), Gesture::none);
    manager.start();
    EXPECT_FALSE(desktop.isPointerMotionWanted());
}

TEST_F(EventTapManagerTest, SwitchedOffStartsNothingButKeepsTheTapEnabled) {
    settings.setIsEnabled(false);
    manager.start();
    desktop.movePointer({200, 200});
    desktop.pressModifiers(kMove);
    EXPECT_EQ(gesture(), Gesture::none);

    desktop.interruptEventTap();
    EXPECT_TRUE(desktop.isEventTapEnabled()) << "the notice itself re-enables";

    desktop.advance(1s);
    desktop.disableEventTapSilently();
    desktop.advance(3999ms);
    EXPECT_FALSE(desktop.isEventTapEnabled());
    desktop.advance(1ms);
    EXPECT_TRUE(desktop.isEventTapEnabled()) << "the health check runs every 5 s";

    desktop.disableEventTapSilently();
    desktop.advance(5s);
    EXPECT_TRUE(desktop.isEventTapEnabled());
    EXPECT_TRUE(desktop.writes().empty());
}

TEST_F(EventTapManagerTest, BeginsTheGestureTheHeldKeysName) {
    const ModifierKeySet move{ModifierKey::control(), ModifierKey::command()};
    const ModifierKeySet resize{ModifierKey::control(), ModifierKey::option()};
    const struct {
        const char* name;
        ModifierKeySet move;
        ModifierKeySet resize;
        std::uint64_t flags;
        Gesture expected;
    } cases[] = {
        {"move", move, resize, kMove, Gesture::move},
        {"move plus shift", move, resize, kMove | ModifierFlag::shift, Gesture::move},
        {"resize", move, resize, kResize, Gesture::resize},
        {"both held: resize wins", move, resize, kMove | kResize, Gesture::resize},
        {"part of a combination", move, resize, ModifierFlag::control, Gesture::none},
        {"no keys", move, resize, 0, Gesture::none},
        {"empty move set never held", {}, resize, ModifierFlag::control, Gesture::none},
        {"empty move set, resize still works", {}, resize, kResize, Gesture::resize},
        {"both sets empty", {}, {}, kMove | kResize, Gesture::none},
    };
    manager.start();
    desktop.movePointer({200, 200});
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        settings.setMoveModifiers(c.move);
        settings.setResizeModifiers(c.resize);
        desktop.pressModifiers(c.flags);
        EXPECT_EQ(gesture(), c.expected);
        EXPECT_EQ(desktop.isPointerMotionWanted(), c.expected != Gesture::none);
        desktop.pressModifiers(0);
    }
}

TEST_F(EventTapManagerTest, AGestureKeepsItsKindWhileEitherCombinationIsHeld) {
    manager.start();
    desktop.movePointer({200, 200});

    desktop.pressModifiers(kMove);
    desktop.pressModifiers(kMove | ModifierFlag::option);
    EXPECT_EQ(gesture(), Gesture::move);
    desktop.pressModifiers(kResize);  // command let go, the resize keys still held
    EXPECT_EQ(gesture(), Gesture::move);
    desktop.pressModifiers(0);
    EXPECT_EQ(gesture(), Gesture::none);

    desktop.pressModifiers(kResize);
    desktop.pressModifiers(kMove);
    EXPECT_EQ(gesture(), Gesture::resize);
    desktop.pressModifiers(ModifierFlag::control);
    EXPECT_EQ(gesture(), Gesture::none);
}

TEST_F(EventTapManagerTest, LeavesTheDesktopOwnWindowsAndIgnoredApplicationsAlone) {
    desktop.addWindow(Window::at({600, 100, 200, 200}, FakeDesktop::ownPid));
    desktop.addWindow(Window::at({900, 100, 200, 200}, 2000).withIdentifier("org.example.Ignored"));
    const std::uint32_t anonymous = desktop.addWindow(Window::at({100, 500, 200, 200}, 3000));
    settings.setIgnoreList({{"org.example.Ignored", "Ignored"}});
    manager.start();

    for (Point p : {Point{1300, 800}, Point{650, 150}, Point{950, 150}}) {
        desktop.movePointer(p);
        desktop.pressModifiers(kMove);
        EXPECT_EQ(gesture(), Gesture::none) << p.x << "," << p.y;
        EXPECT_FALSE(desktop.isPointerMotionWanted());
        desktop.pressModifiers(0);
    }

    // Reaching a window with the keys already held starts nothing: a new press is needed.
    desktop.movePointer({1300, 800});
    desktop.pressModifiers(kMove);
    desktop.movePointer({150, 550});
    EXPECT_EQ(gesture(), Gesture::none);
    desktop.pressModifiers(0);

    // A window whose application has no identifier is never ignored.
    desktop.pressModifiers(kMove);
    EXPECT_EQ(gesture(), Gesture::move);
    restAt({160, 560}, 20ms);
    EXPECT_EQ(desktop.frameOf(anonymous).origin(), (Point{110, 510}));
}

TEST_F(EventTapManagerTest, EscapePutsTheWindowBackAndIsCapturedOnlyWhileAGestureCanUseIt) {
    const std::uint32_t video =
        desktop.addWindow(Window::at({700, 100, 400, 300}, 3000).withFullscreen());
    manager.start();
    desktop.movePointer({200, 200});
    EXPECT_FALSE(desktop.isCancelKeyCaptured());
    desktop.pressCancelKey();
    EXPECT_EQ(desktop.cancelKeysSeenByApplications, 1) << "no gesture: Escape is the user's";

    desktop.pressModifiers(kMove);
    restAt({260, 240}, 20ms);
    ASSERT_EQ(desktop.frameOf(window), (Rect{160, 140, 400, 300}));
    desktop.pressCancelKey();
    EXPECT_EQ(desktop.cancelKeysSeenByApplications, 1);
    EXPECT_EQ(gesture(), Gesture::none);
    desktop.runPendingQueueWork();
    EXPECT_EQ(desktop.frameOf(window), kFrame);

    // Still held, with an extra key even: nothing follows the pointer, nothing starts.
    desktop.pressModifiers(kMove | ModifierFlag::shift);
    restAt({300, 320}, 1s);
    EXPECT_EQ(gesture(), Gesture::none);
    EXPECT_EQ(desktop.frameOf(window), kFrame);
    EXPECT_FALSE(desktop.isCancelKeyCaptured());
    EXPECT_FALSE(desktop.isPointerMotionWanted());

    desktop.pressModifiers(0);
    desktop.pressModifiers(kResize);
    ASSERT_EQ(gesture(), Gesture::resize);
    restAt({350, 370}, 20ms);
    EXPECT_EQ(desktop.frameOf(window), (Rect{100, 100, 450, 350}));
    desktop.pressCancelKey();
    desktop.runPendingQueueWork();
    EXPECT_EQ(desktop.frameOf(window), kFrame);

    // A release the tap missed is noticed by the watch, and the next press starts anew.
    desktop.holdModifiersSilently(0);
    desktop.advance(150ms);
    desktop.pressModifiers(kMove);
    EXPECT_EQ(gesture(), Gesture::move);
    desktop.pressModifiers(0);
    EXPECT_FALSE(desktop.isCancelKeyCaptured()) << "released";

    auto begin = [&] {
        desktop.pressModifiers(kMove);
        EXPECT_TRUE(desktop.isCancelKeyCaptured());
    };
    begin();
    desktop.holdModifiersSilently(ModifierFlag::control);
    desktop.advance(150ms);
    EXPECT_FALSE(desktop.isCancelKeyCaptured()) << "release noticed by the watch";
    EXPECT_EQ(gesture(), Gesture::none);
    EXPECT_FALSE(desktop.isPointerMotionWanted());
    begin();
    manager.stop();
    manager.start();
    EXPECT_FALSE(desktop.isCancelKeyCaptured()) << "stopped";

    // The window closed under the gesture: nothing to put back; held keys keep the gesture.
    begin();
    desktop.removeWindow(window);
    restAt({220, 220}, 150ms);
    EXPECT_EQ(gesture(), Gesture::move);
    EXPECT_FALSE(desktop.isCancelKeyCaptured()) << "window gone";
    desktop.pressModifiers(0);

    desktop.movePointer({800, 200});
    desktop.pressModifiers(kMove);
    EXPECT_EQ(gesture(), Gesture::none) << "fullscreen";
    EXPECT_FALSE(desktop.isCancelKeyCaptured());
    restAt({900, 300}, 100ms);
    EXPECT_EQ(desktop.frameOf(video), (Rect{700, 100, 400, 300}));
}

// Pointer handed over by motion events, or sampled by the ticks (which leave motion unselected).
class EventTapPointerSourceTest : public EventTapManagerTest,
                                  public ::testing::WithParamInterface<bool> {
  protected:
    EventTapPointerSourceTest() { desktop.pointerSamplingOffered = sampled; }

    const bool sampled = GetParam();
};

TEST_P(EventTapPointerSourceTest, MovesWithThePointerUntilTheKeysAreReleasedOrItIsSwitchedOff) {
    manager.start();
    desktop.movePointer({200, 200});
    EXPECT_FALSE(desktop.isPointerMotionWanted()) << "idle: no motion events";

    desktop.pressModifiers(kMove);
    EXPECT_EQ(desktop.isPointerMotionWanted(), !sampled);
    restAt({230, 210}, 20ms);
    desktop.dragPointer({250, 230});  // a held button changes nothing
    desktop.advance(20ms);
    EXPECT_EQ(desktop.frameOf(window), (Rect{150, 130, 400, 300}));
    EXPECT_EQ(desktop.pointerSamplesTaken() > 0, sampled);

    desktop.pressModifiers(0);
    EXPECT_EQ(gesture(), Gesture::none);
    EXPECT_FALSE(desktop.isPointerMotionWanted());
    restAt({400, 400}, 1s);
    EXPECT_EQ(desktop.frameOf(window), (Rect{150, 130, 400, 300}));

    // Switched off mid-gesture: the window freezes and the watch still ends the gesture.
    desktop.pressModifiers(kMove);
    restAt({430, 410}, 20ms);
    settings.setIsEnabled(false);
    desktop.movePointer({480, 430});
    desktop.pressModifiers(0);  // no longer examined
    EXPECT_EQ(gesture(), Gesture::move);
    desktop.advance(150ms);
    EXPECT_EQ(gesture(), Gesture::none);
    EXPECT_EQ(desktop.frameOf(window), (Rect{180, 140, 400, 300}));
    settings.setIsEnabled(true);
    desktop.pressModifiers(kMove);
    restAt({500, 440}, 20ms);
    EXPECT_EQ(desktop.frameOf(window), (Rect{200, 150, 400, 300}));
}

INSTANTIATE_TEST_SUITE_P(Engine, EventTapPointerSourceTest, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "Sampled" : "Handed";
                         });

}  // namespace
}  // namespace gf::test
