#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/WindowControl.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

class WindowHandleTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        platform_ = connectPlatform();
        ASSERT_NE(platform_, nullptr);
    }

    std::shared_ptr<WindowHandle> handleOf(const TestClient& client) {
        auto handles = platform_->windowControl().windowsOfProcess(client.pid);
        if (!handles) {
            return nullptr;
        }
        for (const auto& handle : *handles) {
            if (handle->windowNumber() == client.window) {
                return handle;
            }
        }
        return nullptr;
    }

    bool frameBecomes(WindowId window, Rect expected) {
        return waitUntil([&] { return probe().frameGeometry(window) == expected; });
    }

    std::unique_ptr<X11Platform> platform_;
};

TEST_F(WindowHandleTest, ReadsTheOuterFrameAsTheUserSeesIt) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    auto handle = handleOf(logo);
    ASSERT_NE(handle, nullptr);
    const Rect frame = *probe().frameGeometry(logo.window);
    EXPECT_EQ(handle->position(), frame.origin());
    EXPECT_EQ(handle->size(), frame.size());
    // Decorations included: the frame is larger than the 200 x 150 client.
    EXPECT_GT(frame.width, 200);
    EXPECT_GT(frame.height, 150);
}

TEST_F(WindowHandleTest, SetPositionLandsTheFrameToThePixelAndKeepsTheSize) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    TestClient& terminal = desktop().startXterm(500, 300, 40, 10);
    for (TestClient* client : {&logo, &terminal}) {
        auto handle = handleOf(*client);
        ASSERT_NE(handle, nullptr);
        const Rect before = *probe().frameGeometry(client->window);
        ASSERT_TRUE(handle->setPosition({333, 217}));
        EXPECT_TRUE(frameBecomes(client->window, {333, 217, before.width, before.height}))
            << "frame at " << probe().frameGeometry(client->window)->x << ","
            << probe().frameGeometry(client->window)->y;
        // Partly off the screen to the top left is allowed too.
        ASSERT_TRUE(handle->setPosition({-20, 5}));
        EXPECT_TRUE(frameBecomes(client->window, {-20, 5, before.width, before.height}));
    }
}

TEST_F(WindowHandleTest, SetSizeLandsTheFrameAndAFollowingMoveKeepsTheNewSize) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    auto handle = handleOf(logo);
    ASSERT_NE(handle, nullptr);

    ASSERT_TRUE(handle->setSize({321, 243}));
    EXPECT_TRUE(frameBecomes(logo.window, {100, 80, 321, 243}));

    // Sent back to back, faster than the window manager applies them.
    ASSERT_TRUE(handle->setSize({260, 190}));
    ASSERT_TRUE(handle->setPosition({140, 120}));
    EXPECT_TRUE(frameBecomes(logo.window, {140, 120, 260, 190}));
    EXPECT_EQ(handle->size(), (Size{260, 190}));
}

TEST_F(WindowHandleTest, AFixedSizeWindowCannotBeResized) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    TestWindowOptions fixed;
    fixed.x = 500;
    fixed.fixedSize = true;
    const WindowId fixedWindow = desktop().createWindow(fixed);
    auto handles = platform_->windowControl().windowsOfProcess(getpid());
    ASSERT_TRUE(handles);
    ASSERT_EQ(handles->size(), 1u);
    EXPECT_EQ(handles->front()->windowNumber(), fixedWindow);
    EXPECT_EQ(handles->front()->isSizeSettable(), false);
    EXPECT_EQ(handleOf(logo)->isSizeSettable(), true);
}

TEST_F(WindowHandleTest, RaiseRestacksWithoutMovingFocusAndMakeMainFocuses) {
    TestClient& back = desktop().startXlogo(100, 100, 300, 200);
    TestClient& front = desktop().startXlogo(200, 150, 300, 200);
    ASSERT_TRUE(waitUntil([&] { return probe().focusedClient() == front.window; }));
    ASSERT_TRUE(probe().isAbove(front.window, back.window));

    auto backHandle = handleOf(back);
    ASSERT_NE(backHandle, nullptr);
    ASSERT_TRUE(backHandle->raise());
    EXPECT_TRUE(waitUntil([&] { return probe().isAbove(back.window, front.window); }));
    EXPECT_EQ(probe().focusedClient(), front.window);

    auto frontHandle = handleOf(front);
    ASSERT_TRUE(frontHandle->makeMain());
    EXPECT_TRUE(waitUntil([&] {
        return probe().focusedClient() == front.window && probe().activeWindow() == front.window &&
               probe().isAbove(front.window, back.window);
    }));
}

TEST_F(WindowHandleTest, AVanishedWindowAnswersSoftly) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    auto handle = handleOf(logo);
    ASSERT_NE(handle, nullptr);
    desktop().killClient(logo);

    EXPECT_EQ(handle->position(), std::nullopt);
    EXPECT_EQ(handle->size(), std::nullopt);
    EXPECT_EQ(handle->isSizeSettable(), std::nullopt);
    EXPECT_FALSE(handle->setPosition({10, 10}));
    EXPECT_FALSE(handle->setSize({100, 100}));
    EXPECT_FALSE(handle->raise());
    EXPECT_FALSE(handle->makeMain());
    EXPECT_EQ(platform_->windowControl().windowsOfProcess(logo.pid)->size(), 0u);
}

TEST_F(WindowHandleTest, HandlesWorkFromAnotherThreadWhileInputIsRead) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    auto handle = handleOf(logo);
    ASSERT_NE(handle, nullptr);
    std::vector<InputEvent> events;
    auto tap = platform_->input().createEventTap(
        [&](const InputEvent& event) { events.push_back(event); });
    tap->setPointerMotionWanted(true);

    // Like the drag session's queue: window requests on a thread of their own.
    std::atomic<bool> allSent{true};
    std::thread mover([&] {
        for (int step = 0; step < 50; ++step) {
            const bool sent = handle->setPosition({100.0 + step, 80}) && handle->position();
            allSent = allSent && sent;
        }
    });
    for (int step = 0; step < 50; ++step) {
        input().movePointerTo(300 + step, 300);
    }
    EXPECT_TRUE(waitUntil([&] {
        return !events.empty() && events.back().location == Point{349, 300};
    }));
    mover.join();
    EXPECT_TRUE(allSent);
    EXPECT_TRUE(waitUntil([&] {
        return probe().frameGeometry(logo.window)->origin() == Point{149, 80};
    }));
}

// Without a window manager the backend changes the windows itself.
class WithoutWindowManagerTest : public WindowHandleTest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {1280, 800, false}; }
};

TEST_F(WithoutWindowManagerTest, WindowsAreMovedResizedAndRaisedDirectly) {
    TestClient& back = desktop().startXlogo(100, 100, 300, 200);
    TestClient& front = desktop().startXlogo(200, 150, 300, 200);
    ASSERT_TRUE(probe().isAbove(front.window, back.window));
    EXPECT_EQ(platform_->windowServer().windowAt({150, 120})->windowNumber, back.window);

    auto handle = handleOf(back);
    ASSERT_NE(handle, nullptr);
    const Rect before = *probe().frameGeometry(back.window);
    EXPECT_EQ(handle->position(), before.origin());
    ASSERT_TRUE(handle->setPosition({40, 30}));
    ASSERT_TRUE(handle->setSize({250, 180}));
    EXPECT_TRUE(frameBecomes(back.window, {40, 30, 250, 180}));

    ASSERT_TRUE(handle->raise());
    EXPECT_TRUE(probe().isAbove(back.window, front.window));
    ASSERT_TRUE(handle->makeMain());
    EXPECT_EQ(probe().focusedClient(), back.window);
}

}  // namespace
}  // namespace gf::test
