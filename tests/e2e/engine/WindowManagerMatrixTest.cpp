// The engine on every desktop we serve: each case runs once per window manager (and with
// none), with real clients, and checks the frames the user sees to the pixel. Each case starts
// one desktop and goes through several gestures on it, so that the whole matrix stays cheap.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cmath>
#include <string>

#include "EngineDesktopTest.h"
#include "platform/x11/XcbReply.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

constexpr std::array everyCorner{ResizeCorner::topLeft, ResizeCorner::topRight,
                                 ResizeCorner::bottomLeft, ResizeCorner::bottomRight};

const char* cornerName(ResizeCorner corner) {
    return std::array{"topLeft", "topRight", "bottomLeft", "bottomRight"}[static_cast<int>(corner)];
}

// The direction in which dragging the corner makes the window larger.
int growthX(ResizeCorner corner) {
    return corner == ResizeCorner::topLeft || corner == ResizeCorner::bottomLeft ? -1 : 1;
}
int growthY(ResizeCorner corner) {
    return corner == ResizeCorner::topLeft || corner == ResizeCorner::topRight ? -1 : 1;
}

// The frame after dragging the corner by (dx, dy) with nothing in the way: the opposite corner
// stays where it was.
Rect draggedBy(Rect frame, ResizeCorner corner, double dx, double dy) {
    const double left = growthX(corner) < 0 ? frame.x + dx : frame.x;
    const double right = growthX(corner) < 0 ? frame.maxX() : frame.maxX() + dx;
    const double top = growthY(corner) < 0 ? frame.y + dy : frame.y;
    const double bottom = growthY(corner) < 0 ? frame.maxY() : frame.maxY() + dy;
    return {left, top, right - left, bottom - top};
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

class WindowManagerMatrixTest : public EngineDesktopTest,
                                public ::testing::WithParamInterface<WindowManager> {
  protected:
    X11Desktop::Options desktopOptions() const override { return {1600, 1000, GetParam()}; }

    // Holds the move keys with the pointer at the centre of the window's visible frame and
    // moves the pointer; false when no move began.
    bool dragBy(WindowId window, int dx, int dy) {
        pointerAt(centreOf(frameOf(window)));
        press(moveKeys);
        if (!session().isDragging()) {
            return false;
        }
        moveBy(dx, dy);
        return true;
    }

    // The newest window has the focus, but without a window manager nobody gives it.
    bool newestHasTheFocus(WindowId newest) {
        if (GetParam() == WindowManager::none) {
            xcb_set_input_focus(desktop().connection(), XCB_INPUT_FOCUS_POINTER_ROOT, newest,
                                XCB_CURRENT_TIME);
            input().sync();
        }
        return waitUntil([&] { return probe().focusedClient() == newest; });
    }

    // Grabs the pointer from the test's own connection: another client, to the backend.
    bool grabPointer() {
        xcb_connection_t* c = desktop().connection();
        auto grab = xcbReply(
            c, xcb_grab_pointer_reply,
            xcb_grab_pointer(c, 0, desktop().root(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                             XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME));
        return grab && grab->status == XCB_GRAB_STATUS_SUCCESS;
    }
    void ungrabPointer() {
        xcb_ungrab_pointer(desktop().connection(), XCB_CURRENT_TIME);
        input().sync();
    }
};

TEST_P(WindowManagerMatrixTest, MovesAndResizesFromEveryCornerByTheVisibleFrame) {
    settings_.setMagneticsEnabled(false);  // snapping would blur where the pointer put it
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect start = frameOf(logo);
    ASSERT_EQ(start.origin(), (Point{400, 300})) << describe(start);

    pointerAt(centreOf(start));
    press(moveKeys);
    ASSERT_TRUE(session().isDragging()) << "no move began";
    for (auto [dx, dy] : {std::pair{50, -20}, {-40, 60}, {20, -30}}) {  // (+30, +10) in all
        input().movePointerBy(dx, dy);
    }
    EXPECT_TRUE(frameBecomes(logo, {start.x + 30, start.y + 10, start.width, start.height}))
        << "moved from " << describe(start);
    release(moveKeys);

    for (const ResizeCorner corner : everyCorner) {
        const Rect before = frameOf(logo);
        pointerAt(inQuarterAt(before, corner));
        press(resizeKeys);
        EXPECT_TRUE(session().isResizing()) << cornerName(corner);
        EXPECT_EQ(session().corner(), corner) << cornerName(corner);
        moveBy(growthX(corner) * 40, growthY(corner) * 30);
        EXPECT_TRUE(frameBecomes(
            logo, draggedBy(before, corner, growthX(corner) * 40, growthY(corner) * 30)))
            << cornerName(corner) << " from " << describe(before);
        release(resizeKeys);
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
    // A panel along the top leaves a work area that starts at y = 40.
    StrutPartial strut;
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

    // The left side 6 short of the screen's left edge.
    const Rect start = frameOf(logo);
    ASSERT_TRUE(dragBy(logo, static_cast<int>(6 - start.x), 0)) << "no move began";
    EXPECT_TRUE(frameBecomes(logo, {0, start.y, start.width, start.height}))
        << "to the screen's left edge from " << describe(start);
    release(moveKeys);

    // The top 6 below the work area's top edge, the right side 5 short of the screen's right.
    const Rect atLeft = frameOf(logo);
    ASSERT_TRUE(
        dragBy(logo, static_cast<int>(1595 - atLeft.maxX()), static_cast<int>(46 - atLeft.y)));
    EXPECT_TRUE(frameBecomes(logo, {1600 - atLeft.width, 40, atLeft.width, atLeft.height}))
        << "to the work area's top and the screen's right from " << describe(atLeft);
    release(moveKeys);

    // The left side 4 past the other window's right side, well clear of anything vertically.
    const Rect atTop = frameOf(logo);
    dragBy(logo, static_cast<int>(otherFrame.maxX() + 4 - atTop.x),
           static_cast<int>(450 - atTop.y));
    EXPECT_TRUE(frameBecomes(logo, {otherFrame.maxX(), 450, atTop.width, atTop.height}))
        << "to the right of " << describe(otherFrame) << " from " << describe(atTop);
    release(moveKeys);

    // The right side 4 short of the other window's left side.
    const Rect toTheRight = frameOf(logo);
    ASSERT_TRUE(dragBy(logo, static_cast<int>(otherFrame.x - 4 - toTheRight.maxX()), 0));
    EXPECT_TRUE(frameBecomes(
        logo, {otherFrame.x - toTheRight.width, 450, toTheRight.width, toTheRight.height}))
        << "to the left of " << describe(otherFrame) << " from " << describe(toTheRight);
    release(moveKeys);
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
    // The window with the keyboard focus, apart from the other two.
    const WindowId typing = desktop().startXlogo(900, 500, 200, 150).window;
    ASSERT_TRUE(probe().isAbove(upper, lower));
    const Rect lowerFrame = frameOf(lower);
    const Rect upperFrame = frameOf(upper);
    const Point onLowerOnly{lowerFrame.x + 10, lowerFrame.y + 10};
    const Point onUpperOnly{upperFrame.maxX() - 10, upperFrame.maxY() - 10};
    const Point onNothing{1300, 850};
    const bool focusMustStay = honoursRestackOfUnfocusedWindows(GetParam());
    if (focusMustStay) {
        ASSERT_TRUE(newestHasTheFocus(typing));
    }
    autoRaise_->start();
    settle();  // the pointer monitor's selection is in effect before the pointer moves

    // A button held down (as in a drag in the window with the focus) while the pointer rests
    // on the lower window.
    pointerAt(centreOf(frameOf(typing)));
    input().pressButton(1);
    moveBy(static_cast<int>(onLowerOnly.x - centreOf(frameOf(typing)).x),
           static_cast<int>(onLowerOnly.y - centreOf(frameOf(typing)).y));
    processEventsFor(wellPastTheDelay);
    EXPECT_TRUE(probe().isAbove(upper, lower)) << "raised while a button was held";
    input().releaseButton(1);
    settle();

    // Another client grabs the pointer, as a menu or a drag and drop does.
    pointerAt(onNothing);
    ASSERT_TRUE(grabPointer());
    moveBy(static_cast<int>(onLowerOnly.x - onNothing.x),
           static_cast<int>(onLowerOnly.y - onNothing.y));
    processEventsFor(wellPastTheDelay);
    EXPECT_TRUE(probe().isAbove(upper, lower)) << "raised while another client grabbed the pointer";
    ungrabPointer();

    // Free again, the pointer comes to rest on the lower window.
    pointerAt(onNothing);
    moveBy(static_cast<int>(onLowerOnly.x - onNothing.x),
           static_cast<int>(onLowerOnly.y - onNothing.y));
    EXPECT_TRUE(waitUntil([&] { return probe().isAbove(lower, upper); })) << "not raised";
    if (focusMustStay) {
        EXPECT_EQ(probe().focusedClient(), typing) << "auto raise took the focus";
    }

    // The first movement of a gesture raises the window it moves.
    autoRaise_->stop();
    const Rect upperBefore = frameOf(upper);
    pointerAt(onUpperOnly);
    press(moveKeys);
    moveBy(20, 10);
    EXPECT_TRUE(frameBecomes(
        upper, {upperBefore.x + 20, upperBefore.y + 10, upperBefore.width, upperBefore.height}));
    EXPECT_TRUE(waitUntil([&] { return probe().isAbove(upper, lower); })) << "not raised";
    release(moveKeys);
    if (focusMustStay) {
        EXPECT_EQ(probe().focusedClient(), typing) << "the gesture took the focus";
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
    // Away from where the window manager put it, to where no edge is near.
    const Rect placed = frameOf(gtk);
    pointerAt(centreOf(placed));
    press(moveKeys);
    ASSERT_TRUE(session().isDragging()) << "no move began";
    moveBy(static_cast<int>(200 - placed.x), static_cast<int>(150 - placed.y));
    EXPECT_TRUE(frameBecomes(gtk, {200, 150, placed.width, placed.height}))
        << "moved from " << describe(placed);
    release(moveKeys);

    // 5 from the screen's left and top edges: the visible frame snaps onto both.
    const Rect start = frameOf(gtk);
    pointerAt(centreOf(start));
    press(moveKeys);
    moveBy(-195, -145);
    EXPECT_TRUE(frameBecomes(gtk, {0, 0, start.width, start.height}))
        << "moved from " << describe(start);
    release(moveKeys);

    // Just below and right of the visible frame's centre, which is above the centre of the
    // window with its shadow (the shadow is deeper below than above).
    const Rect atCorner = frameOf(gtk);
    pointerAt({std::floor(atCorner.midX()) + 20, std::floor(atCorner.midY()) + 1});
    press(resizeKeys);
    EXPECT_EQ(session().corner(), ResizeCorner::bottomRight);
    moveBy(40, 30);
    EXPECT_TRUE(frameBecomes(gtk, draggedBy(atCorner, ResizeCorner::bottomRight, 40, 30)))
        << "from " << describe(atCorner);
    release(resizeKeys);

    const Rect grown = frameOf(gtk);
    pointerAt(inQuarterAt(grown, ResizeCorner::topLeft));
    press(resizeKeys);
    EXPECT_EQ(session().corner(), ResizeCorner::topLeft);
    moveBy(30, 20);
    EXPECT_TRUE(frameBecomes(gtk, draggedBy(grown, ResizeCorner::topLeft, 30, 20)))
        << "from " << describe(grown);
    release(resizeKeys);
}

INSTANTIATE_TEST_SUITE_P(Gtk, ClientSideDecorationTest, ::testing::Values(3, 4),
                         [](const auto& info) { return "gtk" + std::to_string(info.param); });

}  // namespace
}  // namespace gf::test
