// Thousands of gestures with magnetics and auto raise on, over windows created and destroyed at
// random (some mid-gesture), against the real program: nothing crashes or leaks, no gesture
// outlives its keys, and the log holds only the event tap's line. GLIMMERFOLD_SOAK_GESTURES and
// GLIMMERFOLD_SOAK_SEED override the count and seed; a failure names both.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <utility>

#include "x11/GlimmerfoldDesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

constexpr int kScreenWidth = 1280;
constexpr int kScreenHeight = 800;
// Below the tray host and inside the screen, so that every gesture has room to go either way.
constexpr Rect kArena{30, 60, kScreenWidth - 60, kScreenHeight - 90};
constexpr int kMinimumWindows = 2;
constexpr int kMaximumWindows = 7;
// A gesture outliving its keys would move the window within a few of its 8 ms ticks.
constexpr auto kAfterReleaseWatch = 100ms;

int environmentNumber(const char* name, int fallback) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? std::atoi(value) : fallback;
}

// Where a gesture takes hold of a window, and which way the hands nudge it at first.
struct Grab {
    WindowId window = 0;
    int x = 0;
    int y = 0;
    Point towards;
};

class SoakTest : public GlimmerfoldDesktopTest {
  protected:
    std::vector<std::string> settings() const override {
        return {"magneticsEnabled=true", "autoRaiseEnabled=true", "autoRaiseDelay=0.05"};
    }

    int random(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random_); }

    WindowId randomWindow() {
        return windows_[static_cast<std::size_t>(random(0, static_cast<int>(windows_.size()) - 1))];
    }

    void createWindow() {
        TestWindowOptions options;
        options.width = random(140, 320);
        options.height = random(110, 240);
        options.x = random(static_cast<int>(kArena.x),
                           static_cast<int>(kArena.maxX()) - options.width - 10);
        options.y = random(static_cast<int>(kArena.y),
                           static_cast<int>(kArena.maxY()) - options.height - 30);
        options.windowClass = "SoakWindow" + std::to_string(++created_);
        windows_.push_back(desktop().createWindow(options));
    }

    void destroyWindow(WindowId window) {
        desktop().destroyWindow(window);
        windows_.erase(std::remove(windows_.begin(), windows_.end(), window), windows_.end());
    }

    // The window the user would grab at (x, y): the front-most of ours whose frame holds it.
    std::optional<WindowId> windowAt(int x, int y) const {
        for (const WindowId client : probe().clientsFrontToBack()) {
            const std::optional<Rect> frame = probe().frameGeometry(client);
            if (std::ranges::find(windows_, client) != windows_.end() && frame &&
                frame->contains(Point{static_cast<double>(x), static_cast<double>(y)})) {
                return client;
            }
        }
        return std::nullopt;
    }

    // A window and a point on it for the next gesture; Glimmerfold may read the pointer only after
    // the first nudge or two, so those points must show the same window too. A resize shrinks a
    // large window or grows a small one; a move heads for the middle of the screen.
    std::optional<Grab> chooseGrab(GestureKind kind) {
        constexpr int kNudge = 12;
        for (int attempt = 0; attempt < 50; ++attempt) {
            const WindowId window = randomWindow();
            const std::optional<Rect> frame = probe().frameGeometry(window);
            if (!frame) {
                continue;
            }
            Grab grab{window, 0, 0, {}};
            if (kind == GestureKind::move) {
                grab.x = static_cast<int>(frame->x + frame->width * random(20, 80) / 100);
                grab.y = static_cast<int>(frame->y + frame->height * random(25, 80) / 100);
                grab.towards = {frame->midX() < kScreenWidth / 2.0 ? 1.0 : -1.0,
                                frame->midY() < kScreenHeight / 2.0 ? 1.0 : -1.0};
            } else {
                grab.x = static_cast<int>(frame->maxX()) - random(30, 45);
                grab.y = static_cast<int>(frame->maxY()) - random(30, 45);
                grab.towards = {frame->width > 260 ? -1.0 : 1.0, frame->height > 200 ? -1.0 : 1.0};
            }
            auto showsWindow = [&](int nudge) {
                return windowAt(grab.x + static_cast<int>(grab.towards.x) * nudge,
                                grab.y + static_cast<int>(grab.towards.y) * nudge) == window;
            };
            if (showsWindow(0) && showsWindow(kNudge) && showsWindow(2 * kNudge)) {
                return grab;
            }
        }
        return std::nullopt;
    }

    // The frame once it has stopped changing, that is, once the last pointer position is applied.
    std::optional<Rect> settledFrame(WindowId window) {
        // Unchanged for 60 ms: on a loaded machine the last motion may take longer than one read.
        std::optional<Rect> last = probe().frameGeometry(window);
        int unchanged = 0;
        auto settled = [&] {
            processEventsFor(20ms);
            const std::optional<Rect> before = std::exchange(last, probe().frameGeometry(window));
            unchanged = before == last ? unchanged + 1 : 0;
            return unchanged >= 3;
        };
        waitUntil(settled, 2s);
        return last;
    }

    std::vector<WindowId> windows_;
    int created_ = 0;
    std::mt19937 random_;
};

TEST_F(SoakTest, GesturesOverWindowsThatComeAndGo) {
    const int gestures = environmentNumber("GLIMMERFOLD_SOAK_GESTURES", GLIMMERFOLD_SOAK_GESTURES);
    const int seed = environmentNumber("GLIMMERFOLD_SOAK_SEED", 8);
    random_.seed(static_cast<std::mt19937::result_type>(seed));
    std::cout << "soak: " << gestures << " gestures, seed " << seed << std::endl;

    auto program = start("glimmerfold.out", 30s);
    ASSERT_TRUE(program && !HasFailure());
    while (static_cast<int>(windows_.size()) < 4) {
        createWindow();
    }

    for (int gesture = 1; gesture <= gestures; ++gesture) {
        SCOPED_TRACE("gesture " + std::to_string(gesture) + " of seed " + std::to_string(seed));
        if (static_cast<int>(windows_.size()) < kMaximumWindows && chance(0.15)) {
            createWindow();
        }
        if (static_cast<int>(windows_.size()) > kMinimumWindows && chance(0.1)) {
            destroyWindow(randomWindow());
        }

        const GestureKind kind = chance(0.6) ? GestureKind::move : GestureKind::resize;
        const std::optional<Grab> grab = chooseGrab(kind);
        ASSERT_TRUE(grab) << "no window shows enough of itself to be grabbed";
        const auto [target, x, y, towards] = *grab;
        ASSERT_TRUE(hands().begin(kind, target, x, y, 10s, towards))
            << (kind == GestureKind::move ? "a move" : "a resize") << " of " << target
            << " did not begin, grabbed at " << x << "," << y << "\n"
            << glimmerfold().output();

        const bool destroyMidway =
            chance(0.04) && static_cast<int>(windows_.size()) > kMinimumWindows;
        const int steps = random(2, 6);
        int pointerX = x;
        int pointerY = y;
        for (int step = 1; step <= steps; ++step) {
            pointerX = std::clamp(pointerX + random(-60, 60), static_cast<int>(kArena.x) + 20,
                                  static_cast<int>(kArena.maxX()) - 20);
            pointerY = std::clamp(pointerY + random(-50, 50), static_cast<int>(kArena.y) + 20,
                                  static_cast<int>(kArena.maxY()) - 20);
            input().movePointerTo(pointerX, pointerY);
            if (destroyMidway && step == 1) {
                destroyWindow(target);
            }
        }
        const std::optional<Rect> beforeRelease =
            destroyMidway ? std::nullopt : settledFrame(target);
        hands().release(chance(0.5));

        // The keys are up: moving on must leave the window where the gesture left it.
        input().movePointerTo(std::clamp(pointerX + 40, 0, kScreenWidth - 1),
                              std::clamp(pointerY + 40, 0, kScreenHeight - 1));
        if (beforeRelease) {
            processEventsFor(kAfterReleaseWatch);
            const std::optional<Rect> after = probe().frameGeometry(target);
            ASSERT_EQ(after, beforeRelease) << "the gesture went on after its keys were let go";
            // A frame off the arena, or out of the sizes a gesture can take hold of both ways, is
            // replaced so that later gestures have room.
            const bool offArena = !kArena.contains(after->origin()) ||
                                  after->maxX() > kArena.maxX() || after->maxY() > kArena.maxY();
            const bool offSize = after->width > 360 || after->height > 280 || after->width < 120 ||
                                 after->height < 100;
            if (offArena || offSize) {
                destroyWindow(target);
                createWindow();
            }
        }
        ASSERT_TRUE(program->isRunning()) << glimmerfold().output();
    }

    const std::vector<std::string> log = glimmerfold().logLines();
    ASSERT_EQ(log.size(), 1u) << fileText(glimmerfold().logFile());
    EXPECT_NE(log[0].find("] [EventTap] Created and enabled successfully."), std::string::npos)
        << log[0];

    // A clean exit, which is also when LeakSanitizer looks for leaks.
    ::kill(program->pid(), SIGTERM);
    EXPECT_EQ(program->waitForExit(60s), 0) << glimmerfold().output();
    const std::string output = glimmerfold().output();
    for (const char* report : {"AddressSanitizer", "LeakSanitizer", "runtime error"}) {
        EXPECT_EQ(output.find(report), std::string::npos) << output;
    }
    EXPECT_EQ(output, "") << "nothing reaches the user";
}

}  // namespace
}  // namespace gf::test
