// Escape during a gesture, maximized and fullscreen windows: the real program on the window
// managers that keep those states, over a window the test creates, gives the focus and listens
// to for key presses.
#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <cmath>
#include <string>
#include <vector>

#include "platform/x11/XcbReply.h"
#include "x11/GestureHands.h"
#include "x11/GlimmerfoldLauncher.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kStateRemove = 0;
constexpr std::uint32_t kStateAdd = 1;
constexpr std::uint32_t kSourceIndicationTool = 2;

std::string describe(const std::optional<Rect>& r) {
    if (!r) {
        return "(none)";
    }
    return "(" + std::to_string(r->x) + ", " + std::to_string(r->y) + ", " +
           std::to_string(r->width) + ", " + std::to_string(r->height) + ")";
}

// The Escape presses that reach a window, seen over a connection of its own, as the application
// owning the window would see them.
class EscapeWatch {
  public:
    EscapeWatch(X11Desktop& desktop, WindowId window)
        : connection_(xcb_connect(desktop.displayName().c_str(), nullptr)),
          escape_(desktop.input().keycodeOf(Keysym::escape)) {
        const std::uint32_t mask = XCB_EVENT_MASK_KEY_PRESS;
        xcb_connection_t* c = connection_.get();
        xcb_change_window_attributes(c, window, XCB_CW_EVENT_MASK, &mask);
        // In place on the server before the first key.
        xcbReply(c, xcb_get_input_focus_reply, xcb_get_input_focus(c));
    }

    // Presses since the last call.
    int presses() {
        xcb_connection_t* c = connection_.get();
        // A round trip: every event the server sent before it has arrived.
        xcbReply(c, xcb_get_input_focus_reply, xcb_get_input_focus(c));
        int count = 0;
        while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(c)}) {
            if ((event->response_type & 0x7f) == XCB_KEY_PRESS &&
                reinterpret_cast<const xcb_key_press_event_t*>(event.get())->detail == escape_) {
                ++count;
            }
        }
        return count;
    }

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* c) const { xcb_disconnect(c); }
    };

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_keycode_t escape_;
};

class GestureAppTest : public X11DesktopTest, public ::testing::WithParamInterface<WindowManager> {
  protected:
    X11Desktop::Options desktopOptions() const override {
        X11Desktop::Options options{1600, 1000, GetParam()};
        options.trayHost = true;
        return options;
    }

    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        // Snapping would blur where the pointer put the window.
        GlimmerfoldLauncher::Options options;
        options.settings = {"magneticsEnabled=false"};
        launcher_ = std::make_unique<GlimmerfoldLauncher>(desktop(), options);
        hands_ = std::make_unique<GestureHands>(desktop());
        glimmerfold_ = launcher_->launch();
        ASSERT_NE(glimmerfold_, nullptr) << launcher_->error();
        ASSERT_TRUE(desktop().trayHost().waitForIcon()) << launcher_->output();
    }

    void TearDown() override {
        if (hands_) {
            hands_->release();
        }
        if (glimmerfold_) {
            glimmerfold_->terminate();
        }
    }

    std::optional<Rect> frameOf(WindowId window) const { return probe().frameGeometry(window); }

    WindowId createFocusedWindow(int x, int y, int width, int height) {
        TestWindowOptions options;
        options.x = x;
        options.y = y;
        options.width = width;
        options.height = height;
        const WindowId window = desktop().createWindow(options);
        const Rect frame = *frameOf(window);
        input().movePointerTo(static_cast<int>(frame.midX()), static_cast<int>(frame.midY()));
        input().pressButton(1);
        input().releaseButton(1);
        EXPECT_TRUE(waitUntil([&] { return probe().focusedClient() == window; }))
            << "the window never took the focus";
        return window;
    }

    void tapEscape() {
        input().pressKey(Keysym::escape);
        input().releaseKey(Keysym::escape);
        input().sync();
    }

    // What a pager sends to change a window's state; the window manager carries it out.
    void changeState(WindowId window, std::uint32_t action,
                     std::initializer_list<const char*> states) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = probe().atom("_NET_WM_STATE");
        event.data.data32[0] = action;
        std::size_t i = 1;
        for (const char* state : states) {
            event.data.data32[i++] = probe().atom(state);
        }
        event.data.data32[3] = kSourceIndicationTool;
        xcb_send_event(desktop().connection(), 0, desktop().root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&event));
        xcb_flush(desktop().connection());
    }

    bool hasState(WindowId window, const char* state) { return probe().hasState(window, state); }
    bool isMaximized(WindowId window) {
        return hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT") &&
               hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ");
    }

    std::unique_ptr<GlimmerfoldLauncher> launcher_;
    std::unique_ptr<GestureHands> hands_;
    std::unique_ptr<ChildProcess> glimmerfold_;
};

// One launch per window manager walks through Escape after a move and a resize, a maximized
// window restored under the pointer, and a fullscreen window left alone.
TEST_P(GestureAppTest, EscapeMaximizedAndFullscreenWindows) {
    const WindowId window = createFocusedWindow(500, 300, 400, 300);
    EscapeWatch escapes(desktop(), window);
    tapEscape();
    ASSERT_EQ(escapes.presses(), 1) << "without a gesture Escape reaches the focused window";

    struct Case {
        GestureKind kind;
        double fx, fy;  // where in the window the keys are pressed
    };
    for (const Case& c : {Case{GestureKind::move, 0.5, 0.5}, Case{GestureKind::resize, 0.8, 0.8}}) {
        SCOPED_TRACE(::testing::PrintToString(c.kind));
        const Rect before = *frameOf(window);
        const int x = static_cast<int>(before.x + c.fx * before.width);
        const int y = static_cast<int>(before.y + c.fy * before.height);
        ASSERT_TRUE(hands_->begin(c.kind, window, x, y))
            << "the window never followed the pointer\n"
            << launcher_->output();
        input().movePointerTo(x + 90, y + 70);
        ASSERT_TRUE(waitUntil([&] {
            const auto now = frameOf(window);
            return now && now->maxX() >= before.maxX() + 60 && now->maxY() >= before.maxY() + 40;
        })) << describe(frameOf(window));

        tapEscape();
        EXPECT_TRUE(waitUntil([&] { return frameOf(window) == before; }))
            << describe(frameOf(window)) << " instead of " << describe(before);
        hands_->release();
        EXPECT_EQ(escapes.presses(), 0) << "the focused window saw the Escape";

        // The gesture let go of Escape: it reaches the window again.
        EXPECT_TRUE(waitUntil([&] {
            tapEscape();
            return escapes.presses() > 0;
        }));
    }

    // Escape put it back where it was: its normal frame, which a restore gives back.
    const Rect normal = *frameOf(window);
    changeState(window, kStateAdd,
                {"_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_MAXIMIZED_HORZ"});
    ASSERT_TRUE(waitUntil([&] {
        return isMaximized(window) && frameOf(window).value_or(Rect{}).width == 1600;
    })) << describe(frameOf(window));
    const Rect maximized = *frameOf(window);

    // The keys go down at (x0, y0); the window manager gives the window its earlier size once
    // the pointer moves. Glimmerfold reads the pointer when it sees the keys, a moment after
    // the server does, so the gesture may start from any place the pointer held until then.
    const int x0 = 1100;
    const int y0 = 300;
    input().movePointerTo(x0, y0);
    hands_->hold(GestureKind::move);
    int steps = 0;
    while (frameOf(window) == maximized && steps < 20) {
        input().movePointerTo(x0 + ++steps, y0);
        waitUntil([&] { return frameOf(window) != maximized; }, 300ms);
    }
    ASSERT_NE(frameOf(window), maximized) << "the window never left its maximized frame";
    // The spot under the pointer, as a share of the maximized frame, is the same spot of the
    // restored one; from there the window follows the pointer.
    auto placed = [&](int startX, Point pointer) {
        const double fx = (startX - maximized.x) / maximized.width;
        const double fy = (y0 - maximized.y) / maximized.height;
        return Rect{std::round(startX - fx * normal.width) + pointer.x - startX,
                    std::round(y0 - fy * normal.height) + pointer.y - y0, normal.width,
                    normal.height};
    };
    std::optional<int> startX;
    auto underPointer = [&](Point pointer) {
        for (int x = x0; x < x0 + steps; ++x) {
            if ((!startX || *startX == x) && frameOf(window) == placed(x, pointer)) {
                startX = x;
                return true;
            }
        }
        return false;
    };
    for (const Point pointer : {Point{x0 + 100.0, y0 + 80.0}, Point{x0 - 300.0, y0 + 250.0}}) {
        input().movePointerTo(static_cast<int>(pointer.x), static_cast<int>(pointer.y));
        EXPECT_TRUE(waitUntil([&] { return underPointer(pointer); }))
            << describe(frameOf(window)) << " expected " << describe(placed(x0, pointer));
    }
    EXPECT_FALSE(hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT"));
    EXPECT_FALSE(hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ"));

    // Escape: maximized again, as it was.
    tapEscape();
    EXPECT_TRUE(waitUntil([&] { return isMaximized(window) && frameOf(window) == maximized; }))
        << describe(frameOf(window));
    hands_->release();

    // Neither combination does anything to a fullscreen window, nor takes Escape from it.
    const WindowId film = createFocusedWindow(200, 200, 300, 200);
    changeState(film, kStateAdd, {"_NET_WM_STATE_FULLSCREEN"});
    const Rect screen{0, 0, 1600, 1000};
    ASSERT_TRUE(waitUntil([&] { return frameOf(film) == screen; })) << describe(frameOf(film));
    EscapeWatch filmEscapes(desktop(), film);
    for (const GestureKind kind : {GestureKind::move, GestureKind::resize}) {
        input().movePointerTo(1200, 800);
        hands_->hold(kind);
        for (int step = 0; step < 10; ++step) {
            input().movePointerBy(-20, -15);
        }
        input().sync();
        processEventsFor(300ms);
        EXPECT_EQ(frameOf(film), screen) << describe(frameOf(film));
        tapEscape();
        EXPECT_EQ(filmEscapes.presses(), 1);
        hands_->release();
    }
    EXPECT_TRUE(hasState(film, "_NET_WM_STATE_FULLSCREEN"));
}

INSTANTIATE_TEST_SUITE_P(MaximizingWindowManagers, GestureAppTest,
                         ::testing::Values(WindowManager::openbox, WindowManager::xfwm4),
                         [](const auto& info) { return std::string(nameOf(info.param)); });

}  // namespace
}  // namespace gf::test
