// The engine under every window manager (and none), checked on the visible frames to the pixel;
// each case walks several gestures on one desktop so that the matrix stays cheap.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QTemporaryDir>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include "engine/AutoRaiseManager.h"
#include "engine/DragSession.h"
#include "engine/EventTapManager.h"
#include "model/DebugLog.h"
#include "model/Settings.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/ThreadSerialQueueFactory.h"
#include "platform/x11/XcbReply.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

std::string describe(Rect r) {
    return "(" + std::to_string(r.x) + ", " + std::to_string(r.y) + ", " + std::to_string(r.width) +
           ", " + std::to_string(r.height) + ")";
}

constexpr std::initializer_list<std::uint32_t> moveKeys{Keysym::controlL, Keysym::superL};
constexpr std::initializer_list<std::uint32_t> resizeKeys{Keysym::controlL, Keysym::altL};

constexpr std::array<std::pair<ResizeCorner, const char*>, 4> everyCorner{
    {{ResizeCorner::topLeft, "topLeft"},
     {ResizeCorner::topRight, "topRight"},
     {ResizeCorner::bottomLeft, "bottomLeft"},
     {ResizeCorner::bottomRight, "bottomRight"}}};

// The direction in which dragging the corner makes the window larger.
int growthX(ResizeCorner c) {
    return c == ResizeCorner::topLeft || c == ResizeCorner::bottomLeft ? -1 : 1;
}
int growthY(ResizeCorner c) {
    return c == ResizeCorner::topLeft || c == ResizeCorner::topRight ? -1 : 1;
}

// The frame after dragging the corner by (dx, dy) with nothing in the way.
Rect draggedBy(Rect frame, ResizeCorner corner, double dx, double dy) {
    return {frame.x + (growthX(corner) < 0 ? dx : 0), frame.y + (growthY(corner) < 0 ? dy : 0),
            frame.width + growthX(corner) * dx, frame.height + growthY(corner) * dy};
}

// A point in the quarter of the frame at the corner, where a resize picks that corner.
Point inQuarterAt(Rect frame, ResizeCorner corner) {
    return {std::floor(frame.midX() + growthX(corner) * frame.width / 4),
            std::floor(frame.midY() + growthY(corner) * frame.height / 4)};
}

// Where raising an unfocused window by a restack request works, a raise must not move the
// keyboard focus; xfwm4 and fluxbox ignore such requests, and activation is the way left there.
bool honoursRestackOfUnfocusedWindows(WindowManager windowManager) {
    return windowManager == WindowManager::openbox || windowManager == WindowManager::icewm ||
           windowManager == WindowManager::none;
}

// The engine in this process on the X11 backend of a private desktop, with XTest as the user's
// hands and ticks on a real background queue. The event tap runs from the start, auto raise only
// when a test starts it; both go before the platform they use, in member order.
class EngineDesktopTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        setDebugLogPath(dir_.filePath("glimmerfold.log").toStdString());
        x11_ = connectPlatform();
        ASSERT_NE(x11_, nullptr);
        platform_.emplace(x11_->platform(scheduler_, queues_));
        tapManager_ = std::make_unique<EventTapManager>(settings_, *platform_);
        autoRaise_ = std::make_unique<AutoRaiseManager>(settings_, *platform_);
        tapManager_->start();
        ASSERT_TRUE(tapManager_->hasEventTap());
    }

    const DragSession& session() const { return tapManager_->dragSession(); }
    // Lets the engine see everything the hands did so far: handling the events may select pointer
    // motion, which a second round trip puts in effect.
    void settle() {
        platform_->input.currentModifierFlags();
        x11_->processPendingEvents();
        platform_->input.currentModifierFlags();
    }
    void press(std::initializer_list<std::uint32_t> keys) {
        for (std::uint32_t key : keys) {
            input().pressKey(key);
        }
        settle();
    }
    void release(std::initializer_list<std::uint32_t> keys) {
        for (std::uint32_t key : keys) {
            input().releaseKey(key);
        }
        settle();
    }
    // A relative move, as a mouse makes it.
    void moveBy(int dx, int dy) {
        input().movePointerBy(dx, dy);
        settle();
    }
    // Puts the pointer somewhere and waits until the backend reads it there.
    void pointerAt(Point p) {
        input().movePointerTo(static_cast<int>(p.x), static_cast<int>(p.y));
        EXPECT_TRUE(waitUntil([&] { return platform_->input.currentPointerPosition() == p; }));
    }

    // The visible frame (decorations in, invisible margins out); empty once the window is gone.
    Rect frameOf(WindowId window) const { return probe().visibleFrame(window).value_or(Rect{}); }
    // Waits until the visible frame is the expected one; on failure says where it was instead.
    ::testing::AssertionResult frameBecomes(WindowId window, Rect expected) {
        if (waitUntil([&] { return frameOf(window) == expected; })) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "the visible frame is " << describe(frameOf(window))
                                             << ", not " << describe(expected);
    }
    static Point centreOf(Rect r) { return {std::floor(r.midX()), std::floor(r.midY())}; }

    // Holds the move keys with the pointer at the centre of the visible frame and moves the
    // pointer; false when no move began.
    bool dragBy(WindowId window, int dx, int dy) {
        pointerAt(centreOf(frameOf(window)));
        press(moveKeys);
        if (!session().isDragging()) {
            return false;
        }
        moveBy(dx, dy);
        return true;
    }

    // A resize from `from`, which must pick `corner`, by (dx, dy).
    void expectResize(WindowId window, ResizeCorner corner, Point from, int dx, int dy) {
        const Rect before = frameOf(window);
        pointerAt(from);
        press(resizeKeys);
        EXPECT_TRUE(session().isResizing());
        EXPECT_EQ(session().corner(), corner);
        moveBy(dx, dy);
        EXPECT_TRUE(frameBecomes(window, draggedBy(before, corner, dx, dy)))
            << "from " << describe(before);
        release(resizeKeys);
    }

    // A move by (dx, dy) that must end with the frame's top left at `to`, its size unchanged.
    void expectMove(WindowId window, double dx, double dy, Point to, const char* where) {
        const Rect start = frameOf(window);
        ASSERT_TRUE(dragBy(window, static_cast<int>(dx), static_cast<int>(dy))) << "no move began";
        EXPECT_TRUE(frameBecomes(window, {to.x, to.y, start.width, start.height}))
            << where << " from " << describe(start);
        release(moveKeys);
    }

    // Rests the pointer at `from`, then moves it to `to` by relative motion.
    void moveFromTo(Point from, Point to) {
        pointerAt(from);
        moveBy(static_cast<int>(to.x - from.x), static_cast<int>(to.y - from.y));
    }

    QTemporaryDir dir_;
    Settings settings_{dir_.filePath("glimmerfold.conf")};
    QtMainThreadScheduler scheduler_;
    ThreadSerialQueueFactory queues_;
    std::unique_ptr<X11Platform> x11_;
    std::optional<Platform> platform_;
    std::unique_ptr<EventTapManager> tapManager_;
    std::unique_ptr<AutoRaiseManager> autoRaise_;
};

class WindowManagerMatrixTest : public EngineDesktopTest,
                                public ::testing::WithParamInterface<WindowManager> {
  protected:
    X11Desktop::Options desktopOptions() const override { return {1600, 1000, GetParam()}; }
};

TEST_P(WindowManagerMatrixTest, MovesAndResizesFromEveryCornerByTheVisibleFrame) {
    settings_.setMagneticsEnabled(false);  // snapping would blur where the pointer put it
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect start = frameOf(logo);
    ASSERT_EQ(start.origin(), (Point{400, 300})) << describe(start);

    ASSERT_TRUE(dragBy(logo, 50, -20)) << "no move began";
    for (auto [dx, dy] : {std::pair{-40, 60}, {20, -30}}) {  // (+30, +10) in all
        input().movePointerBy(dx, dy);
    }
    EXPECT_TRUE(frameBecomes(logo, {start.x + 30, start.y + 10, start.width, start.height}))
        << "moved from " << describe(start);
    release(moveKeys);

    for (const auto& [corner, name] : everyCorner) {
        SCOPED_TRACE(name);
        expectResize(logo, corner, inQuarterAt(frameOf(logo), corner), growthX(corner) * 40,
                     growthY(corner) * 30);
    }

    // Far inwards: the visible frame, decorations and all, stops at the minimum.
    const Rect large = frameOf(logo);
    pointerAt(inQuarterAt(large, ResizeCorner::topLeft));
    press(resizeKeys);
    moveBy(500, 500);
    EXPECT_TRUE(frameBecomes(logo, {large.maxX() - 50, large.maxY() - 50, 50, 50}))
        << "shrunk from " << describe(large);
    release(resizeKeys);
}

TEST_P(WindowManagerMatrixTest, SnapsToTheScreenTheWorkAreaAndOtherWindowsByTheirVisibleFrames) {
    settings_.setMagneticsEnabled(true);
    StrutPartial strut;  // a panel along the top: the work area starts at y = 40
    strut.top = 40;
    strut.topEndX = 1599;
    desktop().createDock(0, 0, 1600, 40, strut);
    const WindowId other = desktop().startXlogo(900, 600, 200, 150).window;
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect otherFrame = frameOf(other);
    if (GetParam() == WindowManager::none) {
        // Xt clients keep their 1-pixel border when nobody reparents them; the user sees it.
        ASSERT_EQ(otherFrame, (Rect{900, 600, 202, 152})) << describe(otherFrame);
    }

    // Each move ends a few pixels short of or past an edge the frame snaps onto.
    Rect f = frameOf(logo);
    expectMove(logo, 6 - f.x, 0, {0, f.y}, "to the screen's left edge");
    f = frameOf(logo);  // the top 6 below the work area's top, the right 5 short of the screen's
    expectMove(logo, 1595 - f.maxX(), 46 - f.y, {1600 - f.width, 40}, "to the work area's top");
    f = frameOf(logo);  // clear of anything vertically
    expectMove(logo, otherFrame.maxX() + 4 - f.x, 450 - f.y, {otherFrame.maxX(), 450},
               "to the other window's right side");
    f = frameOf(logo);
    expectMove(logo, otherFrame.x - 4 - f.maxX(), 0, {otherFrame.x - f.width, 450},
               "to the other window's left side");
}

TEST_P(WindowManagerMatrixTest,
       RaisesWithoutTakingTheFocusAndNotWhileAButtonOrAGrabHoldsThePointer) {
    constexpr auto delay = 100ms;
    constexpr auto wellPastTheDelay = 4 * delay;
    settings_.setMagneticsEnabled(false);
    settings_.setAutoRaiseEnabled(true);
    settings_.setAutoRaiseDelay(std::chrono::duration<double>(delay).count());
    const WindowId lower = desktop().startXlogo(200, 200, 300, 200).window;
    const WindowId upper = desktop().startXlogo(350, 250, 300, 200).window;
    const WindowId typing = desktop().startXlogo(900, 500, 200, 150).window;  // has the focus
    ASSERT_TRUE(probe().isAbove(upper, lower));
    const Point onLowerOnly{frameOf(lower).x + 10, frameOf(lower).y + 10};
    const Point onNothing{1300, 850};
    const bool focusMustStay = honoursRestackOfUnfocusedWindows(GetParam());
    if (GetParam() == WindowManager::none) {  // nobody gives the newest window the focus
        xcb_set_input_focus(desktop().connection(), XCB_INPUT_FOCUS_POINTER_ROOT, typing,
                            XCB_CURRENT_TIME);
        input().sync();
    }
    if (focusMustStay) {
        ASSERT_TRUE(waitUntil([&] { return probe().focusedClient() == typing; }));
    }
    autoRaise_->start();
    settle();  // the pointer monitor's selection is in effect before the pointer moves

    // A button held down (a drag in the window with the focus) onto the lower window.
    pointerAt(centreOf(frameOf(typing)));
    input().pressButton(1);
    moveFromTo(centreOf(frameOf(typing)), onLowerOnly);
    processEventsFor(wellPastTheDelay);
    EXPECT_TRUE(probe().isAbove(upper, lower)) << "raised while a button was held";
    input().releaseButton(1);
    settle();

    // Another client grabs the pointer, as a menu or a drag and drop does: the test's connection.
    pointerAt(onNothing);
    xcb_connection_t* c = desktop().connection();
    auto grab = xcbReply(
        c, xcb_grab_pointer_reply,
        xcb_grab_pointer(c, 0, desktop().root(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                         XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME));
    ASSERT_TRUE(grab && grab->status == XCB_GRAB_STATUS_SUCCESS);
    moveFromTo(onNothing, onLowerOnly);
    processEventsFor(wellPastTheDelay);
    EXPECT_TRUE(probe().isAbove(upper, lower)) << "raised while another client grabbed the pointer";
    xcb_ungrab_pointer(c, XCB_CURRENT_TIME);
    input().sync();

    moveFromTo(onNothing, onLowerOnly);  // free again
    EXPECT_TRUE(waitUntil([&] { return probe().isAbove(lower, upper); })) << "not raised";
    if (focusMustStay) {
        EXPECT_EQ(probe().focusedClient(), typing) << "auto raise took the focus";
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWindowManager, WindowManagerMatrixTest,
                         ::testing::ValuesIn(everyWindowManager()),
                         [](const auto& info) { return std::string(nameOf(info.param)); });

// GTK 3 and GTK 4 windows under a compositing window manager draw their own title bar and a
// shadow around it, inside their window; the shadow is no part of what the user moves.
class ClientSideDecorationTest : public EngineDesktopTest,
                                 public ::testing::WithParamInterface<int> {
  protected:
    X11Desktop::Options desktopOptions() const override {
        return {1600, 1000, WindowManager::xfwm4Compositing};
    }
};

TEST_P(ClientSideDecorationTest, SnapsAndResizesByTheVisibleFrameNotTheShadow) {
    settings_.setMagneticsEnabled(true);
    const WindowId gtk = desktop().startGtkApplication(GetParam()).window;
    ASSERT_TRUE(waitUntil([&] { return probe().clientSideExtents(gtk).size() == 4; }))
        << "no client-side decorations";
    // Away from where the window manager put it, to where no edge is near; then 5 from the
    // screen's left and top edges, where the visible frame snaps onto both.
    const Rect placed = frameOf(gtk);
    expectMove(gtk, 200 - placed.x, 150 - placed.y, {200, 150}, "away");
    expectMove(gtk, -195, -145, {0, 0}, "to the top left");

    // Just below and right of the visible frame's centre, which is above the centre of the
    // window with its shadow (the shadow is deeper below than above).
    const Rect atCorner = frameOf(gtk);
    expectResize(gtk, ResizeCorner::bottomRight,
                 {std::floor(atCorner.midX()) + 20, std::floor(atCorner.midY()) + 1}, 40, 30);
    expectResize(gtk, ResizeCorner::topLeft, inQuarterAt(frameOf(gtk), ResizeCorner::topLeft), 30,
                 20);
}

INSTANTIATE_TEST_SUITE_P(Gtk, ClientSideDecorationTest, ::testing::Values(3, 4),
                         [](const auto& info) { return "gtk" + std::to_string(info.param); });

}  // namespace
}  // namespace gf::test
