// The engine against a real X server with a real window manager: XTest plays the user's hands,
// the backend's events feed the engine, the drag session's ticks run on a real background queue,
// and the outcome is checked on the visible frames and the stacking order as the server reports
// them.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <string>

#include "EngineDesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class EngineE2ETest : public EngineDesktopTest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {1600, 1000}; }

    void SetUp() override {
        EngineDesktopTest::SetUp();
        // Snapping would blur where the pointer put the window.
        settings_.setMagneticsEnabled(false);
    }
};

TEST_F(EngineE2ETest, MagneticsLandTheFrameExactlyOnAMonitorEdgeAndAWindowEdge) {
    settings_.setMagneticsEnabled(true);
    const Rect otherFrame = frameOf(desktop().startXlogo(100, 650, 150, 150).window);
    TestClient& logo = desktop().startXlogo(600, 300, 300, 200);
    // Left side 6 short of the monitor's left edge, then 4 past the other window's right edge;
    // no other line is near either side.
    for (const double target : {0.0, otherFrame.maxX()}) {
        const Rect start = frameOf(logo.window);
        pointerAt(centreOf(start));
        press(moveKeys);
        moveBy(static_cast<int>(target + (target == 0 ? 6 : 4) - start.x), 0);
        EXPECT_TRUE(frameBecomes(logo.window, {target, start.y, start.width, start.height}))
            << "other " << describe(otherFrame);
        release(moveKeys);
    }
}

class ResizeE2ETest : public EngineE2ETest, public ::testing::WithParamInterface<ResizeCorner> {};

TEST_P(ResizeE2ETest, OppositeCornerStaysWhileTheFrameStopsAtTheMinimumAndTheMonitor) {
    const ResizeCorner corner = GetParam();
    // The direction in which dragging the corner makes the window larger.
    const int sx = corner == ResizeCorner::topLeft || corner == ResizeCorner::bottomLeft ? -1 : 1;
    const int sy = corner == ResizeCorner::topLeft || corner == ResizeCorner::topRight ? -1 : 1;
    TestClient& logo = desktop().startXlogo(600, 350, 300, 200);
    // Holds the resize keys with the pointer in the window's quarter at the corner.
    auto beginAtCorner = [&] {
        const Rect f = frameOf(logo.window);
        pointerAt(
            {std::floor(f.midX() + sx * f.width / 4), std::floor(f.midY() + sy * f.height / 4)});
        press(resizeKeys);
        EXPECT_EQ(session().corner(), corner);
        return f;
    };

    // Inwards, far past the minimum.
    const Rect start = beginAtCorner();
    moveBy(-sx * 500, -sy * 500);
    const Rect smallest{sx < 0 ? start.maxX() - 50 : start.x, sy < 0 ? start.maxY() - 50 : start.y,
                        50, 50};
    EXPECT_TRUE(frameBecomes(logo.window, smallest));
    release(resizeKeys);

    // Outwards, as far as the pointer goes: the frame stops at the monitor's edges.
    const Rect small = beginAtCorner();
    moveBy(sx * 5000, sy * 5000);
    const double left = sx < 0 ? 0 : small.x;
    const double top = sy < 0 ? 0 : small.y;
    const double right = sx < 0 ? small.maxX() : 1600;
    const double bottom = sy < 0 ? small.maxY() : 1000;
    EXPECT_TRUE(frameBecomes(logo.window, {left, top, right - left, bottom - top}));
    release(resizeKeys);
}

INSTANTIATE_TEST_SUITE_P(EveryCorner, ResizeE2ETest,
                         ::testing::Values(ResizeCorner::topLeft, ResizeCorner::topRight,
                                           ResizeCorner::bottomLeft, ResizeCorner::bottomRight),
                         [](const auto& info) {
                             return std::string(
                                 std::array{"topLeft", "topRight", "bottomLeft",
                                            "bottomRight"}[static_cast<int>(info.param)]);
                         });

// With two monitors side by side, a resize is limited by the monitor the window started on,
// even though the pointer goes on into the other one.
class TwoMonitorEngineE2ETest : public EngineE2ETest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {2400, 900}; }
};

TEST_F(TwoMonitorEngineE2ETest, ResizeStopsAtTheEdgeOfTheMonitorItStartedOn) {
    desktop().setMonitors({{0, 0, 1200, 900}, {1200, 0, 1200, 900}});
    TestClient& logo = desktop().startXlogo(700, 300, 300, 200);
    const Rect start = frameOf(logo.window);
    pointerAt({start.maxX() - 10, start.maxY() - 10});
    press(resizeKeys);
    moveBy(900, 0);  // well into the second monitor
    EXPECT_TRUE(frameBecomes(logo.window, {start.x, start.y, 1200 - start.x, start.height}));
    release(resizeKeys);
}

TEST_F(EngineE2ETest, ControlSuperMovesTheWindowByThePointersDisplacementUntilReleased) {
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect start = frameOf(logo);
    pointerAt(centreOf(start));
    press(moveKeys);
    ASSERT_TRUE(session().isDragging());
    for (auto [dx, dy] : {std::pair{50, -20}, {-40, 60}, {17, -33}, {3, 3}}) {  // (+30, +10)
        input().movePointerBy(dx, dy);
    }
    const Rect moved{start.x + 30, start.y + 10, start.width, start.height};
    EXPECT_TRUE(frameBecomes(logo, moved));

    release(moveKeys);
    EXPECT_FALSE(session().isDragging());
    moveBy(60, 60);
    processEventsFor(100ms);
    EXPECT_EQ(frameOf(logo), moved) << describe(frameOf(logo));
}

TEST_F(EngineE2ETest, ControlAltResizesFromTheNearestCornerAndSoDoAllThreeKeys) {
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect start = frameOf(logo);
    pointerAt({start.x + 40, start.y + 30});  // the top-left quarter
    press(resizeKeys);
    ASSERT_TRUE(session().isResizing());
    EXPECT_EQ(session().corner(), ResizeCorner::topLeft);
    moveBy(-20, -30);
    const Rect grown{start.x - 20, start.y - 30, start.width + 20, start.height + 30};
    EXPECT_TRUE(frameBecomes(logo, grown));
    release(resizeKeys);
    EXPECT_FALSE(session().isResizing());

    // Control last, so that both combinations become held with the same key.
    pointerAt({grown.maxX() - 40, grown.maxY() - 30});  // the bottom-right quarter
    press({Keysym::altL, Keysym::superL, Keysym::controlL});
    ASSERT_TRUE(session().isResizing());
    moveBy(25, 15);
    EXPECT_TRUE(frameBecomes(logo, {grown.x, grown.y, grown.width + 25, grown.height + 15}));
    release({Keysym::altL});  // the move keys are still held: the resize goes on
    moveBy(5, 5);
    EXPECT_TRUE(frameBecomes(logo, {grown.x, grown.y, grown.width + 30, grown.height + 20}));
    release(moveKeys);
    EXPECT_FALSE(session().isResizing());
}

TEST_F(EngineE2ETest, TheDesktopOwnWindowsAndIgnoredApplicationsAreLeftAlone) {
    settings_.setIgnoreList({{"XTerm", "xterm"}});
    const WindowId terminal = desktop().startXterm(100, 100, 40, 10).window;
    TestWindowOptions ownOptions;
    ownOptions.x = 100;
    ownOptions.y = 450;
    const WindowId own = desktop().createWindow(ownOptions);
    const Rect terminalStart = frameOf(terminal);
    const Rect ownStart = frameOf(own);
    for (Point target : {centreOf(terminalStart), centreOf(ownStart), Point{1200, 800}}) {
        pointerAt(target);
        press(moveKeys);
        EXPECT_FALSE(session().isDragging()) << target.x << ", " << target.y;
        moveBy(40, 40);
        release(moveKeys);
    }
    processEventsFor(100ms);
    EXPECT_EQ(frameOf(terminal), terminalStart) << describe(frameOf(terminal));
    EXPECT_EQ(frameOf(own), ownStart) << describe(frameOf(own));
}

TEST_F(EngineE2ETest, AutoRaiseBringsTheWindowUpAfterTheDelayAndNotBefore) {
    constexpr auto delay = 400ms;
    settings_.setAutoRaiseEnabled(true);
    settings_.setAutoRaiseDelay(std::chrono::duration<double>(delay).count());
    const WindowId below = desktop().startXlogo(200, 200, 300, 200).window;
    const WindowId above = desktop().startXlogo(350, 250, 300, 200).window;
    ASSERT_TRUE(probe().isAbove(above, below));
    autoRaise_->start();
    settle();  // the pointer monitor's selection is in effect before the pointer moves
    const auto movedAt = std::chrono::steady_clock::now();
    pointerAt({250, 230});  // on the part of the lower window left uncovered
    ASSERT_TRUE(waitUntil([&] { return probe().isAbove(below, above); }));
    EXPECT_GE(std::chrono::steady_clock::now() - movedAt, delay);
}

}  // namespace
}  // namespace gf::test
