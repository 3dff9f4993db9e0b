#include <gtest/gtest.h>

#include <algorithm>

#include "platform/WindowServer.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

class WindowServerTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        platform_ = connectPlatform();
        ASSERT_NE(platform_, nullptr);
    }

    WindowServer& server() { return platform_->windowServer(); }

    std::optional<WindowDescription> listed(WindowId window) {
        const std::vector<WindowDescription> windows = server().onScreenWindows();
        auto found =
            std::find_if(windows.begin(), windows.end(),
                         [window](const WindowDescription& w) { return w.windowNumber == window; });
        if (found == windows.end()) {
            return std::nullopt;
        }
        return *found;
    }

    std::unique_ptr<X11Platform> platform_;
};

TEST_F(WindowServerTest, WindowAtGivesTheClientUnderThePointerWithItsOuterFrame) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    const std::optional<Rect> frame = probe().frameGeometry(logo.window);
    ASSERT_TRUE(frame);

    // Inside the client area and on the title bar alike.
    for (Point point : {Point{200, 160}, Point{frame->x + 5, frame->y + 3}}) {
        const std::optional<WindowDescription> found = server().windowAt(point);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->windowNumber, logo.window);
        EXPECT_EQ(found->ownerPid, logo.pid);
        EXPECT_EQ(found->layer, WindowLayer::normal);
        EXPECT_EQ(found->bounds, frame);
    }
}

TEST_F(WindowServerTest, TheDesktopGivesNothingAndEdgesBelongToWhatLiesBeyond) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    const Rect frame = *probe().frameGeometry(logo.window);

    const std::optional<WindowDescription> desktopPoint = server().windowAt({900, 600});
    EXPECT_TRUE(!desktopPoint || desktopPoint->layer < WindowLayer::normal);

    // The right and bottom edges lie outside the reported bounds, the last
    // pixel row and column inside; the server agrees about the pixel beyond.
    const Rect bounds = *listed(logo.window)->bounds;
    EXPECT_FALSE(bounds.contains({frame.maxX(), frame.midY()}));
    EXPECT_FALSE(bounds.contains({frame.midX(), frame.maxY()}));
    EXPECT_TRUE(bounds.contains({frame.maxX() - 1, frame.maxY() - 1}));
    EXPECT_TRUE(bounds.contains(frame.origin()));
    EXPECT_FALSE(server().windowAt({frame.maxX(), frame.midY()}).has_value());
}

TEST_F(WindowServerTest, OnScreenWindowsFollowTheStackingOrderFrontToBack) {
    TestClient& back = desktop().startXlogo(100, 100, 300, 200);
    TestClient& front = desktop().startXlogo(200, 150, 300, 200);

    std::vector<WindowId> order;
    for (const WindowDescription& window : server().onScreenWindows()) {
        order.push_back(window.windowNumber);
    }
    EXPECT_EQ(order, probe().clientsFrontToBack());
    ASSERT_EQ(order.size(), 2u);
    EXPECT_EQ(order.front(), front.window);
    EXPECT_EQ(server().windowAt({250, 200})->windowNumber, front.window);
    EXPECT_EQ(server().windowAt({150, 150})->windowNumber, back.window);
}

TEST_F(WindowServerTest, LayersFollowTheWindowTypes) {
    TestClient& logo = desktop().startXlogo(100, 80, 400, 300);
    TestWindowOptions utility;
    utility.x = 600;
    utility.type = "_NET_WM_WINDOW_TYPE_UTILITY";
    const WindowId utilityWindow = desktop().createWindow(utility);
    TestWindowOptions above;
    above.x = 600;
    above.y = 300;
    above.states = {"_NET_WM_STATE_ABOVE"};
    const WindowId aboveWindow = desktop().createWindow(above);
    TestWindowOptions background;
    background.width = 1280;
    background.height = 800;
    background.type = "_NET_WM_WINDOW_TYPE_DESKTOP";
    const WindowId backgroundWindow = desktop().createWindow(background);
    TestWindowOptions menu;
    menu.x = 800;
    menu.y = 400;
    menu.overrideRedirect = true;
    const WindowId menuWindow = desktop().createWindow(menu);
    // A panel across the logo window, without a strut so nothing moves away.
    TestWindowOptions panel;
    panel.x = 50;
    panel.y = 150;
    panel.width = 600;
    panel.height = 40;
    panel.type = "_NET_WM_WINDOW_TYPE_DOCK";
    const WindowId dock = desktop().createWindow(panel);

    EXPECT_EQ(listed(logo.window)->layer, WindowLayer::normal);
    EXPECT_EQ(listed(utilityWindow)->layer, WindowLayer::floating);
    EXPECT_EQ(listed(aboveWindow)->layer, WindowLayer::floating);
    EXPECT_GE(*listed(menuWindow)->layer, server().dockLayer());
    // The desktop background is no on-screen window, though it is the one at
    // an otherwise empty point.
    EXPECT_FALSE(listed(backgroundWindow));
    const std::optional<WindowDescription> bare = server().windowAt({1200, 780});
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->windowNumber, backgroundWindow);
    EXPECT_LT(*bare->layer, WindowLayer::normal);

    // The window server names the dock at a point it covers; walking the list
    // front to back, the first ordinary window there is the logo beneath it.
    const Point onPanel{200, 170};
    const std::optional<WindowDescription> top = server().windowAt(onPanel);
    ASSERT_TRUE(top);
    EXPECT_EQ(top->windowNumber, dock);
    EXPECT_GE(*top->layer, server().dockLayer());
    const std::vector<WindowDescription> windows = server().onScreenWindows();
    auto firstOrdinary =
        std::find_if(windows.begin(), windows.end(), [&](const WindowDescription& w) {
            return w.layer >= WindowLayer::normal && w.layer < server().dockLayer() &&
                   w.bounds->contains(onPanel);
        });
    ASSERT_NE(firstOrdinary, windows.end());
    EXPECT_EQ(firstOrdinary->windowNumber, logo.window);
}

}  // namespace
}  // namespace gf::test
