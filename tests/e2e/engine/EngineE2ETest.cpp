// The engine against a real X server with openbox where a case needs more than the window
// manager matrix gives it: several monitors, and windows that must be left alone. XTest plays the
// user's hands and the outcome is checked on the visible frames as the server reports them.
#include <gtest/gtest.h>

#include <chrono>

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

// With two monitors side by side, a resize is limited by the monitor the window started on,
// even though the pointer goes on into the other one.
class TwoMonitorEngineE2ETest : public EngineE2ETest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {2400, 900}; }
};

TEST_F(TwoMonitorEngineE2ETest, ResizeStopsAtEveryEdgeOfTheMonitorItStartedOn) {
    desktop().setMonitors({{0, 0, 1200, 900}, {1200, 0, 1200, 900}});
    TestClient& logo = desktop().startXlogo(700, 300, 300, 200);
    const Rect start = frameOf(logo.window);
    pointerAt({start.maxX() - 10, start.maxY() - 10});
    press(resizeKeys);
    moveBy(900, 900);  // well into the second monitor, and past the bottom
    EXPECT_TRUE(frameBecomes(logo.window, {start.x, start.y, 1200 - start.x, 900 - start.y}));
    release(resizeKeys);

    // From the top-left corner as far as the pointer goes: the left and top edges.
    const Rect grown = frameOf(logo.window);
    pointerAt({grown.x + 10, grown.y + 10});
    press(resizeKeys);
    moveBy(-5000, -5000);
    EXPECT_TRUE(frameBecomes(logo.window, {0, 0, grown.maxX(), grown.maxY()}));
    release(resizeKeys);
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

}  // namespace
}  // namespace gf::test
