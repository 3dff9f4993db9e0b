#include "engine/WindowLocation.h"

#include "EngineTest.h"

namespace gf::test {
namespace {

using WindowLocationTest = EngineTest;

TEST_F(WindowLocationTest, BothMethodsFindTheOrdinaryWindowUnderThePointAndItsOwnIdentifier) {
    const auto behind = desktop.addWindow(Window::at({0, 0, 800, 600}, 7).withIdentifier("org.b"));
    const auto front =
        desktop.addWindow(Window::at({100, 100, 400, 300}, 8).withIdentifier("org.front"));
    for (auto locate : {locateWindowWithWindowServer, locateWindowWithWindowList}) {
        auto found = locate(platform, {150, 150});
        ASSERT_TRUE(found);
        EXPECT_EQ(found->pid, 8);
        EXPECT_EQ(found->windowID, front);
        EXPECT_EQ(found->bundleIdentifier, "org.front");
        ASSERT_TRUE(found->windowHandle);
        EXPECT_EQ(found->windowHandle->windowNumber(), front);
        // The right and bottom edges belong to the window behind.
        EXPECT_EQ(locate(platform, {500, 150})->windowID, behind);
        EXPECT_EQ(locate(platform, {150, 400})->windowID, behind);
    }

    // One process showing several applications' windows (an office suite, ssh -X).
    desktop.addWindow(Window::at({0, 0, 400, 300}, 17).withIdentifier("Writer"));
    desktop.addWindow(Window::at({500, 0, 400, 300}, 17).withIdentifier("Calc"));
    desktop.addWindow(Window::at({0, 400, 400, 300}, 17));
    for (auto locate : {locateWindowWithWindowServer, locateWindowWithWindowList}) {
        EXPECT_EQ(locate(platform, {10, 10})->bundleIdentifier, "Writer");
        EXPECT_EQ(locate(platform, {510, 10})->bundleIdentifier, "Calc");
        EXPECT_EQ(locate(platform, {10, 410})->bundleIdentifier, std::nullopt);
    }
}

TEST_F(WindowLocationTest, DesktopsDocksAndOverlaysAreRejectedButTheListLooksBelowThem) {
    desktop.addWindow(Window::at({0, 0, 1440, 900}, 1).withLayer(WindowLayer::desktop));
    const auto ordinary = desktop.addWindow(Window::at({0, 0, 400, 300}, 2));
    desktop.addWindow(Window::at({0, 0, 1440, 30}, 3).withLayer(WindowLayer::dock));
    desktop.addWindow(Window::at({300, 200, 50, 50}, 4).withLayer(WindowLayer::overlay));
    const auto floating =
        desktop.addWindow(Window::at({600, 600, 50, 50}, 5).withLayer(WindowLayer::floating));
    desktop.addWindow(Window::at({0, 250, 200, 50}, 6).withoutHandle());

    EXPECT_FALSE(locateWindowWithWindowServer(platform, {10, 10}));  // the dock
    EXPECT_EQ(locateWindowWithWindowList(platform, {10, 10})->windowID, ordinary);
    EXPECT_EQ(locateWindowWithWindowList(platform, {310, 210})->windowID, ordinary);
    EXPECT_FALSE(locateWindowWithWindowServer(platform, {1000, 500}));  // bare desktop
    EXPECT_FALSE(locateWindowWithWindowList(platform, {1000, 500}));
    EXPECT_EQ(locateWindowWithWindowServer(platform, {610, 610})->windowID, floating);
    // A window without a handle is skipped by the list only.
    EXPECT_FALSE(locateWindowWithWindowServer(platform, {10, 260}));
    EXPECT_EQ(locateWindowWithWindowList(platform, {10, 260})->windowID, ordinary);
    desktop.unlistablePids.insert(2);
    EXPECT_FALSE(locateWindowWithWindowList(platform, {10, 260}));
}

TEST_F(WindowLocationTest, UnreliableServerAnswersDegradeAsExpected) {
    const auto noBounds = desktop.addWindow(Window::at({0, 0, 400, 300}, 1).withUnknownBounds());
    auto viaServer = locateWindowWithWindowServer(platform, {10, 10});
    ASSERT_TRUE(viaServer);
    EXPECT_EQ(viaServer->windowID, noBounds);
    EXPECT_FALSE(viaServer->bundleIdentifier);
    EXPECT_FALSE(locateWindowWithWindowList(platform, {10, 10}));  // no bounds, no containment

    const auto listed = desktop.addWindow(Window::at({500, 0, 100, 100}, 2));
    desktop.windowServerAvailable = false;
    EXPECT_FALSE(locateWindowWithWindowServer(platform, {510, 10}));
    EXPECT_EQ(locateWindowWithWindowList(platform, {510, 10})->windowID, listed);
}

TEST_F(WindowLocationTest, HandleIsMatchedByNumberElseTheFirstWindowIsTaken) {
    const auto first = desktop.addWindow(Window::at({0, 0, 10, 10}, 9));
    const auto second = desktop.addWindow(Window::at({20, 0, 10, 10}, 9));
    // Handles come in stacking order: `second` is listed first.
    EXPECT_EQ(findWindowHandle(platform.windowControl, 9, first)->windowNumber(), first);
    EXPECT_EQ(findWindowHandle(platform.windowControl, 9, 12345)->windowNumber(), second);
    EXPECT_FALSE(findWindowHandle(platform.windowControl, 10, first));

    const auto anonymous = desktop.addWindow(Window::at({50, 50, 10, 10}, 11).withUnknownNumber());
    desktop.addWindow(Window::at({0, 0, 1, 1}, 11).withUnknownNumber());
    auto found = locateWindowWithWindowList(platform, {55, 55});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->windowID, anonymous);
    // The handle is the process's first listed window, whatever its number.
    EXPECT_EQ(found->windowHandle->position(), (Point{0, 0}));
}

}  // namespace
}  // namespace gf::test
