// The drag session against a real X server with a real window manager: the
// backend's pointer events feed the session, its ticks run on a real
// background queue, and the outcome is checked on the window's outer frame
// as the server reports it.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "engine/DragSession.h"
#include "engine/WindowLocation.h"
#include "model/Settings.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/ThreadSerialQueueFactory.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

class DragSessionE2ETest : public X11DesktopTest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {1600, 1000, true}; }

    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        x11_ = connectPlatform();
        ASSERT_NE(x11_, nullptr);
        platform_.emplace(x11_->platform(scheduler_, queues_));
        session_ = std::make_unique<DragSession>(settings_, *platform_);
        tap_ = platform_->input.createEventTap([this](const InputEvent& e) {
            if (e.type == InputEventType::mouseMoved ||
                e.type == InputEventType::leftMouseDragged) {
                session_->setLatestMouse(e.location);
            }
        });
        ASSERT_NE(tap_, nullptr);
        tap_->setEnabled(true);
        tap_->setPointerMotionWanted(true);
    }

    void TearDown() override {
        tap_.reset();
        session_.reset();
    }

    std::shared_ptr<WindowHandle> handleOf(const TestClient& client) {
        return findWindowHandle(platform_->windowControl, client.pid, client.window);
    }
    Rect frameOf(const TestClient& client) const {
        return probe().frameGeometry(client.window).value_or(Rect{});
    }
    bool frameBecomes(const TestClient& client, Rect expected) {
        return waitUntil([&] { return frameOf(client) == expected; });
    }
    // Puts the pointer somewhere and waits until the backend reads it there.
    Point pointerAt(Point p) {
        input().movePointerTo(static_cast<int>(p.x), static_cast<int>(p.y));
        EXPECT_TRUE(waitUntil([&] { return platform_->input.currentPointerPosition() == p; }));
        return p;
    }
    void moveThrough(std::initializer_list<std::pair<int, int>> steps) {
        for (const auto& [dx, dy] : steps) {
            input().movePointerBy(dx, dy);
        }
    }
    static Point centreOf(Rect r) { return {std::floor(r.midX()), std::floor(r.midY())}; }

    QTemporaryDir dir_;
    Settings settings_{dir_.filePath("settings.conf")};
    QtMainThreadScheduler scheduler_;
    ThreadSerialQueueFactory queues_;
    std::unique_ptr<X11Platform> x11_;
    std::optional<Platform> platform_;
    std::unique_ptr<DragSession> session_;
    std::unique_ptr<EventTap> tap_;
};

std::string describe(Rect r) {
    return "(" + std::to_string(r.x) + ", " + std::to_string(r.y) + ", " + std::to_string(r.width) +
           ", " + std::to_string(r.height) + ")";
}

TEST_F(DragSessionE2ETest, MoveLandsTheFrameAtStartPlusTheTotalDisplacement) {
    settings_.setMagneticsEnabled(false);
    TestClient& logo = desktop().startXlogo(500, 300, 300, 200);
    const Rect start = frameOf(logo);
    session_->beginMove(handleOf(logo), logo.pid, pointerAt(centreOf(start)));
    ASSERT_TRUE(session_->isDragging());
    moveThrough({{50, -20}, {-40, 60}, {17, -33}, {3, 3}});  // (+30, +10) in all
    const Rect expected{start.x + 30, start.y + 10, start.width, start.height};
    EXPECT_TRUE(frameBecomes(logo, expected)) << describe(frameOf(logo));
    session_->end();
}

TEST_F(DragSessionE2ETest, MagneticsLandTheFrameExactlyOnAMonitorEdgeAndAWindowEdge) {
    TestClient& other = desktop().startXlogo(100, 650, 150, 150);
    TestClient& logo = desktop().startXlogo(600, 300, 300, 200);
    const Rect otherFrame = frameOf(other);
    Rect start = frameOf(logo);

    // Left side 6 short of the monitor's left edge; no other line is near either side.
    Point mouse = pointerAt(centreOf(start));
    session_->beginMove(handleOf(logo), logo.pid, mouse);
    input().movePointerBy(static_cast<int>(6 - start.x), 0);
    EXPECT_TRUE(frameBecomes(logo, {0, start.y, start.width, start.height}))
        << describe(frameOf(logo));
    session_->end();

    // Left side 4 past the other window's right edge.
    start = frameOf(logo);
    mouse = pointerAt(centreOf(start));
    session_->beginMove(handleOf(logo), logo.pid, mouse);
    input().movePointerBy(static_cast<int>(otherFrame.maxX() + 4 - start.x), 0);
    EXPECT_TRUE(frameBecomes(logo, {otherFrame.maxX(), start.y, start.width, start.height}))
        << describe(frameOf(logo)) << " other " << describe(otherFrame);
    session_->end();
}

class DragSessionResizeE2ETest : public DragSessionE2ETest,
                                 public ::testing::WithParamInterface<ResizeCorner> {
  protected:
    // A point inside the window's quadrant at the corner.
    static Point insideCorner(Rect f, ResizeCorner corner) {
        const bool left = corner == ResizeCorner::topLeft || corner == ResizeCorner::bottomLeft;
        const bool top = corner == ResizeCorner::topLeft || corner == ResizeCorner::topRight;
        return {std::floor(left ? f.x + f.width / 4 : f.x + f.width * 3 / 4),
                std::floor(top ? f.y + f.height / 4 : f.y + f.height * 3 / 4)};
    }
    // The direction in which dragging the corner makes the window larger.
    static std::pair<int, int> outwards(ResizeCorner corner) {
        const bool left = corner == ResizeCorner::topLeft || corner == ResizeCorner::bottomLeft;
        const bool top = corner == ResizeCorner::topLeft || corner == ResizeCorner::topRight;
        return {left ? -1 : 1, top ? -1 : 1};
    }
    void beginResizeAtCorner(const TestClient& client, ResizeCorner corner) {
        session_->beginResize(handleOf(client), client.pid,
                              pointerAt(insideCorner(frameOf(client), corner)));
        ASSERT_TRUE(session_->isResizing());
        ASSERT_EQ(session_->corner(), corner);
    }
};

TEST_P(DragSessionResizeE2ETest, OppositeCornerStaysWhileTheFrameStopsAtTheMinimumAndTheMonitor) {
    const ResizeCorner corner = GetParam();
    const auto [sx, sy] = outwards(corner);
    TestClient& logo = desktop().startXlogo(600, 350, 300, 200);

    // Inwards, far past the minimum.
    const Rect start = frameOf(logo);
    beginResizeAtCorner(logo, corner);
    ASSERT_FALSE(HasFatalFailure());
    input().movePointerBy(-sx * 500, -sy * 500);
    const Rect smallest{sx < 0 ? start.maxX() - 50 : start.x, sy < 0 ? start.maxY() - 50 : start.y,
                        50, 50};
    EXPECT_TRUE(frameBecomes(logo, smallest)) << describe(frameOf(logo));
    session_->end();

    // Outwards, as far as the pointer goes: the frame stops at the monitor's edges.
    const Rect small = frameOf(logo);
    beginResizeAtCorner(logo, corner);
    ASSERT_FALSE(HasFatalFailure());
    input().movePointerBy(sx * 5000, sy * 5000);
    const double left = sx < 0 ? 0 : small.x;
    const double top = sy < 0 ? 0 : small.y;
    const double right = sx < 0 ? small.maxX() : 1600;
    const double bottom = sy < 0 ? small.maxY() : 1000;
    EXPECT_TRUE(frameBecomes(logo, {left, top, right - left, bottom - top}))
        << describe(frameOf(logo));
    session_->end();
}

std::string cornerName(const ::testing::TestParamInfo<ResizeCorner>& info) {
    switch (info.param) {
        case ResizeCorner::topLeft:
            return "topLeft";
        case ResizeCorner::topRight:
            return "topRight";
        case ResizeCorner::bottomLeft:
            return "bottomLeft";
        case ResizeCorner::bottomRight:
            return "bottomRight";
    }
    return "unknown";
}

INSTANTIATE_TEST_SUITE_P(EveryCorner, DragSessionResizeE2ETest,
                         ::testing::Values(ResizeCorner::topLeft, ResizeCorner::topRight,
                                           ResizeCorner::bottomLeft, ResizeCorner::bottomRight),
                         cornerName);

// With two monitors side by side, a resize is limited by the monitor the window
// started on, even though the pointer goes on into the other one.
class DragSessionTwoMonitorE2ETest : public DragSessionE2ETest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {2400, 900, true}; }
};

TEST_F(DragSessionTwoMonitorE2ETest, ResizeStopsAtTheEdgeOfTheMonitorItStartedOn) {
    desktop().setMonitors({{0, 0, 1200, 900}, {1200, 0, 1200, 900}});
    TestClient& logo = desktop().startXlogo(700, 300, 300, 200);
    const Rect start = frameOf(logo);
    session_->beginResize(handleOf(logo), logo.pid,
                          pointerAt({start.maxX() - 10, start.maxY() - 10}));
    ASSERT_EQ(session_->corner(), ResizeCorner::bottomRight);
    input().movePointerBy(900, 0);  // well into the second monitor
    EXPECT_TRUE(frameBecomes(logo, {start.x, start.y, 1200 - start.x, start.height}))
        << describe(frameOf(logo));
    session_->end();
}

}  // namespace
}  // namespace gf::test
