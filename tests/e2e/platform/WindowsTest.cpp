// The window server and the window handles against openbox and real clients, checked on the
// outer frames and the stacking order as the X server reports them.
#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>

#include "X11PlatformTest.h"

namespace gf::test {
namespace {

class WindowsTest : public X11PlatformTest {
  protected:
    WindowServer& server() { return platform_->windowServer(); }

    std::optional<WindowDescription> listed(WindowId window) {
        const std::vector<WindowDescription> all = server().onScreenWindows();
        const auto found = std::ranges::find(all, window, &WindowDescription::windowNumber);
        return found == all.end() ? std::nullopt : std::optional(*found);
    }

    std::shared_ptr<WindowHandle> handleOf(std::int32_t pid, WindowId window) {
        const auto handles = platform_->windowControl().windowsOfProcess(pid).value_or(
            std::vector<std::shared_ptr<WindowHandle>>{});
        const auto found = std::ranges::find_if(
            handles, [&](const auto& handle) { return handle->windowNumber() == window; });
        return found == handles.end() ? nullptr : *found;
    }

    bool frameBecomes(WindowId window, Rect expected) {
        return waitUntil([&] { return probe().frameGeometry(window) == expected; });
    }
};

TEST_F(WindowsTest, WindowAtGivesTheClientUnderThePointerByItsOuterFrameAndLayer) {
    TestClient& back = desktop().startXlogo(100, 100, 300, 200);
    TestClient& front = desktop().startXlogo(200, 150, 300, 200);
    const Rect frame = *probe().frameGeometry(front.window);
    // Inside the client area and on the title bar alike.
    for (Point point : {Point{300, 250}, Point{frame.x + 5, frame.y + 3}}) {
        const std::optional<WindowDescription> found = server().windowAt(point);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->windowNumber, front.window);
        EXPECT_EQ(found->ownerPid, front.pid);
        EXPECT_EQ(found->layer, WindowLayer::normal);
        EXPECT_EQ(found->bounds, frame);
    }
    EXPECT_EQ(server().windowAt({150, 150})->windowNumber, back.window);
    const std::vector<WindowDescription> all = server().onScreenWindows();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].windowNumber, front.window);
    EXPECT_EQ(all[1].windowNumber, back.window);

    // The last pixel row and column are the window's, the right and bottom edges are not.
    auto at = [&](Point p) { return server().windowAt(p).value_or(WindowDescription{}); };
    EXPECT_EQ(at({frame.maxX() - 1, frame.maxY() - 1}).windowNumber, front.window);
    EXPECT_NE(at({frame.maxX(), frame.midY()}).windowNumber, front.window);
    EXPECT_NE(at({frame.midX(), frame.maxY()}).windowNumber, front.window);
    const std::optional<WindowDescription> nothing = server().windowAt({900, 600});
    EXPECT_TRUE(!nothing || nothing->layer < WindowLayer::normal) << "the desktop gives nothing";

    // Layers follow the window types, and the list looks below a dock.
    const WindowId utilityWindow =
        desktop().createWindow(windowAt(600, 0, "_NET_WM_WINDOW_TYPE_UTILITY"));
    TestWindowOptions above = windowAt(600, 300);
    above.states = {"_NET_WM_STATE_ABOVE"};
    const WindowId aboveWindow = desktop().createWindow(above);
    const WindowId backgroundWindow =
        desktop().createWindow(windowAt(0, 0, "_NET_WM_WINDOW_TYPE_DESKTOP", 1280, 800));
    TestWindowOptions menu = windowAt(800, 400);
    menu.overrideRedirect = true;
    const WindowId menuWindow = desktop().createWindow(menu);
    // A panel across the front window, without a strut so nothing moves away.
    const WindowId dock =
        desktop().createWindow(windowAt(50, 150, "_NET_WM_WINDOW_TYPE_DOCK", 600, 40));

    EXPECT_EQ(listed(back.window)->layer, WindowLayer::normal);
    EXPECT_EQ(listed(utilityWindow)->layer, WindowLayer::floating);
    EXPECT_EQ(listed(aboveWindow)->layer, WindowLayer::floating);
    EXPECT_GE(*listed(menuWindow)->layer, server().dockLayer());
    // The desktop background is no on-screen window, though it is the one at an empty point.
    EXPECT_FALSE(listed(backgroundWindow));
    const std::optional<WindowDescription> bare = server().windowAt({1200, 780});
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->windowNumber, backgroundWindow);
    EXPECT_LT(*bare->layer, WindowLayer::normal);

    // The window server names the dock at a point it covers; walking the list front to back,
    // the first ordinary window there is the one beneath it.
    const Point onPanel{200, 170};
    const std::optional<WindowDescription> top = server().windowAt(onPanel);
    ASSERT_TRUE(top);
    EXPECT_EQ(top->windowNumber, dock);
    EXPECT_GE(*top->layer, server().dockLayer());
    const std::vector<WindowDescription> windows = server().onScreenWindows();
    auto firstOrdinary = std::ranges::find_if(windows, [&](const WindowDescription& w) {
        return w.layer >= WindowLayer::normal && w.layer < server().dockLayer() &&
               w.bounds->contains(onPanel);
    });
    ASSERT_NE(firstOrdinary, windows.end());
    EXPECT_EQ(firstOrdinary->windowNumber, front.window);
}

TEST_F(WindowsTest, PositionSizeAndStateLandAndReadTheOuterFrameToThePixel) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    auto handle = handleOf(logo.pid, logo.window);
    ASSERT_NE(handle, nullptr);
    const Rect before = *probe().frameGeometry(logo.window);
    EXPECT_EQ(handle->position(), before.origin());
    EXPECT_EQ(handle->size(), before.size());
    EXPECT_GT(handle->size()->width, 200) << "the frame, decorations included";
    ASSERT_TRUE(handle->setPosition({-20, 5}));
    EXPECT_TRUE(frameBecomes(logo.window, {-20, 5, before.width, before.height}));
    ASSERT_TRUE(handle->setSize({260, 190}));
    EXPECT_TRUE(frameBecomes(logo.window, {-20, 5, 260, 190}));
    EXPECT_EQ(handle->size(), (Size{260, 190}));

    TestWindowOptions fixed = windowAt(500, 0);
    fixed.fixedSize = true;
    const WindowId fixedWindow = desktop().createWindow(fixed);
    auto handles = platform_->windowControl().windowsOfProcess(getpid());
    ASSERT_TRUE(handles && handles->size() == 1u);
    EXPECT_EQ(handles->front()->windowNumber(), fixedWindow);
    EXPECT_EQ(handles->front()->isSizeSettable(), false);
    EXPECT_EQ(handle->isSizeSettable(), true);

    // Fullscreen as the window manager keeps it, which no gesture takes on.
    TestWindowOptions film = windowAt(0, 0);
    film.states = {"_NET_WM_STATE_FULLSCREEN"};
    const std::shared_ptr<WindowHandle> filmHandle =
        handleOf(getpid(), desktop().createWindow(film));
    ASSERT_NE(filmHandle, nullptr);
    EXPECT_TRUE(waitUntil([&] { return filmHandle->state().fullscreen; }));
    EXPECT_FALSE(handle->state().fullscreen);
}

class WithoutWindowManagerTest : public WindowsTest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {1280, 800, WindowManager::none}; }
};

// A window manager moves and resizes its frame first and the client inside a moment later. A
// read in between must give the frame the user sees, not the client's old size around it.
TEST_F(WithoutWindowManagerTest, AFrameResizedBeforeItsClientIsReadAsTheFrameShowsIt) {
    xcb_connection_t* c = desktop().connection();
    const WindowId client = desktop().createWindow(windowAt(601, 370, {}, 300, 200));
    // Frame it as openbox would: a border of 1, a title bar of 19 and a bottom handle of 5.
    const xcb_window_t frame = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, frame, desktop().root(), 600, 350, 302, 225, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_reparent_window(c, client, frame, 1, 20);
    const std::array<std::uint32_t, 4> extents{1, 1, 20, 5};
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, client, probe().atom("_NET_FRAME_EXTENTS"),
                        XCB_ATOM_CARDINAL, 32, extents.size(), extents.data());
    const std::array<std::uint32_t, 2> normalState{1, XCB_WINDOW_NONE};
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, client, probe().atom("WM_STATE"),
                        probe().atom("WM_STATE"), 32, normalState.size(), normalState.data());
    xcb_map_window(c, frame);
    xcb_map_window(c, client);
    const std::array<std::uint32_t, 2> shrunk{50, 50};
    xcb_configure_window(c, frame, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         shrunk.data());
    ASSERT_TRUE(frameBecomes(client, {600, 350, 50, 50}));

    const std::shared_ptr<WindowHandle> handle = handleOf(getpid(), client);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->position(), (Point{600, 350}));
    EXPECT_EQ(handle->size(), (Size{50, 50}));
    ASSERT_TRUE(listed(client).has_value());
    EXPECT_EQ(listed(client)->bounds, (Rect{600, 350, 50, 50}));
}

}  // namespace
}  // namespace gf::test
