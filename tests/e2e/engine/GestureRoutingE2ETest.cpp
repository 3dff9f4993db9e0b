// The engine's entry points against a real X server with a real window
// manager: XTest plays the user's hands, the X11 backend reports the keys and
// the pointer, and the outcome is checked on the outer frames and the stacking
// order as the server reports them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

#include "engine/AutoRaiseManager.h"
#include "engine/EventTapManager.h"
#include "model/DebugLog.h"
#include "model/Settings.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/ThreadSerialQueueFactory.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

enum class Gesture { none, move, resize };

std::string describe(Rect r) {
    return "(" + std::to_string(r.x) + ", " + std::to_string(r.y) + ", " + std::to_string(r.width) +
           ", " + std::to_string(r.height) + ")";
}

class GestureRoutingE2ETest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        setDebugLogPath(dir_.filePath("glimmerfold.log").toStdString());
        // Snapping would blur where the pointer put the window.
        settings_.setMagneticsEnabled(false);
        x11_ = connectPlatform();
        ASSERT_NE(x11_, nullptr);
        platform_.emplace(x11_->platform(scheduler_, queues_));
        tapManager_ = std::make_unique<EventTapManager>(settings_, *platform_);
        autoRaise_ = std::make_unique<AutoRaiseManager>(settings_, *platform_);
        tapManager_->start();
        ASSERT_TRUE(tapManager_->hasEventTap());
    }

    void TearDown() override {
        if (tapManager_) {
            autoRaise_->stop();
            tapManager_->stop();
        }
        autoRaise_.reset();
        tapManager_.reset();
    }

    Gesture gesture() const {
        const DragSession& session = tapManager_->dragSession();
        return session.isDragging() ? Gesture::move
                                    : (session.isResizing() ? Gesture::resize : Gesture::none);
    }
    // Lets the engine see everything the hand did so far: a round trip on the
    // backend's connection brings in the events sent before it, handling them
    // may select pointer motion, and a second round trip puts that in effect.
    void settle() {
        platform_->input.currentModifierFlags();
        x11_->processPendingEvents();
        platform_->input.currentModifierFlags();
    }

    void press(std::initializer_list<std::uint32_t> keys) {
        for (std::uint32_t key : keys) {
            input().pressKey(key);
        }
        settle();
    }
    void release(std::initializer_list<std::uint32_t> keys) {
        for (std::uint32_t key : keys) {
            input().releaseKey(key);
        }
        settle();
    }
    void moveBy(int dx, int dy) {
        input().movePointerBy(dx, dy);
        settle();
    }

    Rect frameOf(WindowId window) const { return probe().frameGeometry(window).value_or(Rect{}); }
    bool frameBecomes(WindowId window, Rect expected) {
        return waitUntil([&] { return frameOf(window) == expected; });
    }
    // Puts the pointer somewhere and waits until the backend reads it there.
    void pointerAt(Point p) {
        input().movePointerTo(static_cast<int>(p.x), static_cast<int>(p.y));
        EXPECT_TRUE(waitUntil([&] { return platform_->input.currentPointerPosition() == p; }));
    }
    static Point centreOf(Rect r) { return {std::floor(r.midX()), std::floor(r.midY())}; }

    QTemporaryDir dir_;
    Settings settings_{dir_.filePath("glimmerfold.conf")};
    QtMainThreadScheduler scheduler_;
    ThreadSerialQueueFactory queues_;
    std::unique_ptr<X11Platform> x11_;
    std::optional<Platform> platform_;
    std::unique_ptr<EventTapManager> tapManager_;
    std::unique_ptr<AutoRaiseManager> autoRaise_;
};

TEST_F(GestureRoutingE2ETest, ControlSuperMovesTheWindowUnderThePointerUntilReleased) {
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect start = frameOf(logo);
    pointerAt(centreOf(start));

    press({Keysym::controlL, Keysym::superL});
    ASSERT_EQ(gesture(), Gesture::move);
    moveBy(50, -20);
    moveBy(-20, 30);
    const Rect moved{start.x + 30, start.y + 10, start.width, start.height};
    EXPECT_TRUE(frameBecomes(logo, moved)) << describe(frameOf(logo));

    release({Keysym::superL, Keysym::controlL});
    EXPECT_EQ(gesture(), Gesture::none);
    moveBy(60, 60);
    processEventsFor(100ms);
    EXPECT_EQ(frameOf(logo), moved) << describe(frameOf(logo));
}

TEST_F(GestureRoutingE2ETest, ControlAltResizesFromTheNearestCorner) {
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect start = frameOf(logo);
    pointerAt({start.x + 40, start.y + 30});  // the top-left quarter

    press({Keysym::controlL, Keysym::altL});
    ASSERT_EQ(gesture(), Gesture::resize);
    EXPECT_EQ(tapManager_->dragSession().corner(), ResizeCorner::topLeft);
    moveBy(-20, -30);
    EXPECT_TRUE(
        frameBecomes(logo, {start.x - 20, start.y - 30, start.width + 20, start.height + 30}))
        << describe(frameOf(logo));

    release({Keysym::altL, Keysym::controlL});
    EXPECT_EQ(gesture(), Gesture::none);
}

TEST_F(GestureRoutingE2ETest, HoldingAllThreeKeysResizes) {
    const WindowId logo = desktop().startXlogo(400, 300, 300, 200).window;
    const Rect start = frameOf(logo);
    pointerAt({start.maxX() - 40, start.maxY() - 30});  // the bottom-right quarter

    // Control last, so that both combinations become held with the same key.
    press({Keysym::altL, Keysym::superL, Keysym::controlL});
    ASSERT_EQ(gesture(), Gesture::resize);
    moveBy(25, 15);
    EXPECT_TRUE(frameBecomes(logo, {start.x, start.y, start.width + 25, start.height + 15}))
        << describe(frameOf(logo));

    release({Keysym::altL});  // the move keys are still held: the resize goes on
    EXPECT_EQ(gesture(), Gesture::resize);
    moveBy(5, 5);
    EXPECT_TRUE(frameBecomes(logo, {start.x, start.y, start.width + 30, start.height + 20}))
        << describe(frameOf(logo));
    release({Keysym::superL, Keysym::controlL});
    EXPECT_EQ(gesture(), Gesture::none);
}

TEST_F(GestureRoutingE2ETest, TheDesktopOwnWindowsAndIgnoredApplicationsAreLeftAlone) {
    settings_.setIgnoreList({{"XTerm", "xterm"}});
    const WindowId terminal = desktop().startXterm(100, 100, 40, 10).window;
    TestWindowOptions ownOptions;
    ownOptions.x = 100;
    ownOptions.y = 450;
    const WindowId own = desktop().createWindow(ownOptions);
    const Rect terminalStart = frameOf(terminal);
    const Rect ownStart = frameOf(own);

    for (Point target : {centreOf(terminalStart), centreOf(ownStart), Point{900, 650}}) {
        pointerAt(target);
        press({Keysym::controlL, Keysym::superL});
        EXPECT_EQ(gesture(), Gesture::none) << target.x << ", " << target.y;
        moveBy(40, 40);
        release({Keysym::superL, Keysym::controlL});
    }
    processEventsFor(100ms);
    EXPECT_EQ(frameOf(terminal), terminalStart) << describe(frameOf(terminal));
    EXPECT_EQ(frameOf(own), ownStart) << describe(frameOf(own));
}

TEST_F(GestureRoutingE2ETest, AutoRaiseBringsTheWindowUpAfterTheDelayAndNotBefore) {
    constexpr auto delay = 400ms;
    settings_.setAutoRaiseEnabled(true);
    settings_.setAutoRaiseDelay(std::chrono::duration<double>(delay).count());
    const WindowId below = desktop().startXlogo(200, 200, 300, 200).window;
    const WindowId above = desktop().startXlogo(350, 250, 300, 200).window;
    ASSERT_TRUE(probe().isAbove(above, below));
    autoRaise_->start();

    const auto movedAt = std::chrono::steady_clock::now();
    pointerAt({250, 230});  // on the part of the lower window left uncovered
    ASSERT_TRUE(waitUntil([&] { return probe().isAbove(below, above); }));
    EXPECT_GE(std::chrono::steady_clock::now() - movedAt, delay);
}

// How often the process wakes up while the user moves the pointer with no
// modifier held: printed, not asserted, since it depends on the machine.
class WakeUpMeasurement {
  public:
    explicit WakeUpMeasurement(pid_t excludedThread) : excluded_(excludedThread) {
        before_ = voluntarySwitches();
    }
    long long count() const { return voluntarySwitches() - before_; }

  private:
    long long voluntarySwitches() const {
        long long total = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
            if (task.path().filename() == std::to_string(excluded_)) {
                continue;
            }
            std::ifstream status(task.path() / "status");
            for (std::string line; std::getline(status, line);) {
                if (line.starts_with("voluntary_ctxt_switches:")) {
                    total += std::stoll(line.substr(line.find(':') + 1));
                }
            }
        }
        return total;
    }

    pid_t excluded_;
    long long before_ = 0;
};

TEST_F(GestureRoutingE2ETest, MeasureWakeUpsDuringPointerMotionWithNoModifierHeld) {
    desktop().startXlogo(200, 200, 300, 200);
    auto measure = [&](const char* what, const char* property) {
        // The user's hand: a thread of its own, left out of the count.
        std::atomic<pid_t> handThread{0};
        std::atomic<bool> stop{false};
        std::atomic<int> motions{0};
        std::thread hand([&] {
            handThread = gettid();
            for (int i = 0; !stop; ++i) {
                input().movePointerTo(300 + (i % 200), 300 + (i % 100));
                ++motions;
                std::this_thread::sleep_for(8ms);  // a mouse reporting at 125 Hz
            }
        });
        ASSERT_TRUE(waitUntil([&] { return handThread != 0; }));
        const WakeUpMeasurement wakeUps(handThread);
        processEventsFor(2s);
        const long long count = wakeUps.count();
        stop = true;
        hand.join();
        std::cout << "[ MEASURE  ] wake-ups during 2 s of pointer motion (" << motions
                  << " moves), " << what << ": " << count << std::endl;
        RecordProperty(property, std::to_string(count));
    };

    measure("tap running, auto raise off", "wakeUpsIdle");
    settings_.setAutoRaiseEnabled(true);
    autoRaise_->start();
    measure("auto raise on, for comparison", "wakeUpsAutoRaise");
}

}  // namespace
}  // namespace gf::test
