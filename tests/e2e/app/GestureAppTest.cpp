// Escape during a gesture and maximized windows: the real program on the window managers that
// keep that state, over a focused window of the test's own.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <cmath>
#include <string>
#include <tuple>

#include "platform/x11/XcbReply.h"
#include "x11/GlimmerfoldDesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

std::string describe(const std::optional<Rect>& r) {
    return r ? "(" + std::to_string(r->x) + ", " + std::to_string(r->y) + ", " +
                   std::to_string(r->width) + ", " + std::to_string(r->height) + ")"
             : "(none)";
}

// The Escape presses that reach a window, seen over a connection of its own as its owner would.
class EscapeWatch {
  public:
    EscapeWatch(X11Desktop& desktop, WindowId window)
        : connection_(xcb_connect(desktop.displayName().c_str(), nullptr), &xcb_disconnect),
          escape_(desktop.input().keycodeOf(Keysym::escape)) {
        const std::uint32_t mask = XCB_EVENT_MASK_KEY_PRESS;
        xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
        presses();  // the selection is in place before the first key
    }

    // Presses since the last call.
    int presses() {
        xcb_connection_t* c = connection_.get();
        xcbReply(c, xcb_get_input_focus_reply, xcb_get_input_focus(c));  // all sent has arrived
        int count = 0;
        while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(c)}) {
            const auto* key = reinterpret_cast<const xcb_key_press_event_t*>(event.get());
            count += (event->response_type & 0x7f) == XCB_KEY_PRESS && key->detail == escape_;
        }
        return count;
    }

  private:
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_keycode_t escape_;
};

class GestureAppTest : public GlimmerfoldDesktopTest,
                       public ::testing::WithParamInterface<WindowManager> {
  protected:
    X11Desktop::Options desktopOptions() const override {
        X11Desktop::Options options{1600, 1000, GetParam()};
        options.trayHost = true;
        return options;
    }

    std::optional<Rect> frameOf(WindowId window) const { return probe().frameGeometry(window); }

    void tapEscape() {
        input().pressKey(Keysym::escape);
        input().releaseKey(Keysym::escape);
        input().sync();
    }

    // What a pager sends to maximize a window; the window manager carries it out.
    void maximize(WindowId window) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = probe().atom("_NET_WM_STATE");
        event.data.data32[0] = 1;  // add
        event.data.data32[1] = probe().atom("_NET_WM_STATE_MAXIMIZED_VERT");
        event.data.data32[2] = probe().atom("_NET_WM_STATE_MAXIMIZED_HORZ");
        event.data.data32[3] = 2;  // the source is a pager or similar tool
        xcb_send_event(desktop().connection(), 0, desktop().root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&event));
        xcb_flush(desktop().connection());
    }

    bool isMaximized(WindowId window) {
        return probe().hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT") &&
               probe().hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ");
    }
};

TEST_P(GestureAppTest, EscapeAndMaximizedWindows) {
    const auto program = start();
    ASSERT_TRUE(program && !HasFailure());
    TestWindowOptions options;
    std::tie(options.x, options.y, options.width, options.height) = std::tuple(500, 300, 400, 300);
    const WindowId window = desktop().createWindow(options);
    input().movePointerTo(700, 450);  // a click in the middle gives it the focus
    input().pressButton(1);
    input().releaseButton(1);
    ASSERT_TRUE(waitUntil([&] { return probe().focusedClient() == window; }));
    EscapeWatch escapes(desktop(), window);
    tapEscape();
    ASSERT_EQ(escapes.presses(), 1) << "without a gesture Escape reaches the focused window";

    // `at`: where in the window, as a share of its size, the keys are pressed.
    for (const auto& [kind, at] : {std::pair{GestureKind::move, 0.5}, {GestureKind::resize, 0.8}}) {
        SCOPED_TRACE(::testing::PrintToString(kind));
        const Rect before = *frameOf(window);
        const int x = static_cast<int>(before.x + at * before.width);
        const int y = static_cast<int>(before.y + at * before.height);
        ASSERT_TRUE(hands().begin(kind, window, x, y)) << "the window never followed the pointer\n"
                                                       << glimmerfold().output();
        input().movePointerTo(x + 90, y + 70);
        ASSERT_TRUE(waitUntil([&] {
            const auto now = frameOf(window);
            return now && now->maxX() >= before.maxX() + 60 && now->maxY() >= before.maxY() + 40;
        })) << describe(frameOf(window));

        tapEscape();
        EXPECT_TRUE(waitUntil([&] { return frameOf(window) == before; }))
            << describe(frameOf(window)) << " instead of " << describe(before);
        hands().release();
        EXPECT_EQ(escapes.presses(), 0) << "the focused window saw the Escape";

        EXPECT_TRUE(waitUntil([&] {
            tapEscape();
            return escapes.presses() > 0;
        })) << "the gesture let go of Escape: it reaches the window again";
    }

    // Escape put it back where it was: its normal frame, which a restore gives back.
    const Rect normal = *frameOf(window);
    maximize(window);
    ASSERT_TRUE(waitUntil([&] {
        return isMaximized(window) && frameOf(window).value_or(Rect{}).width == 1600;
    })) << describe(frameOf(window));
    const Rect maximized = *frameOf(window);

    // The keys go down at (x0, y0); the window manager restores the size once the pointer
    // moves, and Glimmerfold may read the pointer at any place it held until then.
    const int x0 = 1100;
    const int y0 = 300;
    input().movePointerTo(x0, y0);
    hands().hold(GestureKind::move);
    int steps = 0;
    while (frameOf(window) == maximized && steps < 20) {
        input().movePointerTo(x0 + ++steps, y0);
        waitUntil([&] { return frameOf(window) != maximized; }, 300ms);
    }
    ASSERT_NE(frameOf(window), maximized) << "the window never left its maximized frame";
    // The spot under the pointer keeps its share of the frame; then the window follows.
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
    EXPECT_FALSE(probe().hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT") ||
                 probe().hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ"));
    tapEscape();  // maximized again, as it was
    EXPECT_TRUE(waitUntil([&] { return isMaximized(window) && frameOf(window) == maximized; }))
        << describe(frameOf(window));
    hands().release();
}

INSTANTIATE_TEST_SUITE_P(MaximizingWindowManagers, GestureAppTest,
                         ::testing::Values(WindowManager::openbox, WindowManager::xfwm4),
                         [](const auto& info) { return std::string(nameOf(info.param)); });

}  // namespace
}  // namespace gf::test
