#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include "engine/AutoRaiseManager.h"
#include "engine/DragSession.h"
#include "engine/EventTapManager.h"
#include "model/DebugLog.h"
#include "model/Settings.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/ThreadSerialQueueFactory.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {

inline std::string describe(Rect r) {
    return "(" + std::to_string(r.x) + ", " + std::to_string(r.y) + ", " + std::to_string(r.width) +
           ", " + std::to_string(r.height) + ")";
}

inline constexpr std::initializer_list<std::uint32_t> moveKeys{Keysym::controlL, Keysym::superL};
inline constexpr std::initializer_list<std::uint32_t> resizeKeys{Keysym::controlL, Keysym::altL};

// The engine in this process on the X11 backend of a private desktop, with XTest as the user's
// hands and ticks on a real background queue. The event tap runs from the start, auto raise only
// when a test starts it.
class EngineDesktopTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        setDebugLogPath(dir_.filePath("glimmerfold.log").toStdString());
        x11_ = connectPlatform();
        ASSERT_NE(x11_, nullptr);
        platform_.emplace(x11_->platform(scheduler_, queues_));
        tapManager_ = std::make_unique<EventTapManager>(settings_, *platform_);
        autoRaise_ = std::make_unique<AutoRaiseManager>(settings_, *platform_);
        tapManager_->start();
        ASSERT_TRUE(tapManager_->hasEventTap());
    }
    void TearDown() override {
        autoRaise_.reset();
        tapManager_.reset();
    }

    const DragSession& session() const { return tapManager_->dragSession(); }
    // Lets the engine see everything the hands did so far: handling the events may select pointer
    // motion, which a second round trip puts in effect.
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
    // A relative move, as a mouse makes it.
    void moveBy(int dx, int dy) {
        input().movePointerBy(dx, dy);
        settle();
    }
    // Puts the pointer somewhere and waits until the backend reads it there.
    void pointerAt(Point p) {
        input().movePointerTo(static_cast<int>(p.x), static_cast<int>(p.y));
        EXPECT_TRUE(waitUntil([&] { return platform_->input.currentPointerPosition() == p; }));
    }

    // The visible frame (decorations in, invisible margins out); empty once the window is gone.
    Rect frameOf(WindowId window) const { return probe().visibleFrame(window).value_or(Rect{}); }
    // Waits until the visible frame is the expected one; on failure says where it was instead.
    ::testing::AssertionResult frameBecomes(WindowId window, Rect expected) {
        if (waitUntil([&] { return frameOf(window) == expected; })) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "the visible frame is " << describe(frameOf(window))
                                             << ", not " << describe(expected);
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

}  // namespace gf::test
