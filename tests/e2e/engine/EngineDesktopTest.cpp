#include "EngineDesktopTest.h"

#include <cmath>

#include "model/DebugLog.h"

namespace gf::test {

std::string describe(Rect r) {
    return "(" + std::to_string(r.x) + ", " + std::to_string(r.y) + ", " + std::to_string(r.width) +
           ", " + std::to_string(r.height) + ")";
}

void EngineDesktopTest::SetUp() {
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

void EngineDesktopTest::TearDown() {
    autoRaise_.reset();
    tapManager_.reset();
}

void EngineDesktopTest::settle() {
    platform_->input.currentModifierFlags();
    x11_->processPendingEvents();
    platform_->input.currentModifierFlags();
}

void EngineDesktopTest::press(std::initializer_list<std::uint32_t> keys) {
    for (std::uint32_t key : keys) {
        input().pressKey(key);
    }
    settle();
}

void EngineDesktopTest::release(std::initializer_list<std::uint32_t> keys) {
    for (std::uint32_t key : keys) {
        input().releaseKey(key);
    }
    settle();
}

void EngineDesktopTest::moveBy(int dx, int dy) {
    input().movePointerBy(dx, dy);
    settle();
}

void EngineDesktopTest::pointerAt(Point p) {
    input().movePointerTo(static_cast<int>(p.x), static_cast<int>(p.y));
    EXPECT_TRUE(waitUntil([&] { return platform_->input.currentPointerPosition() == p; }));
}

Rect EngineDesktopTest::frameOf(WindowId window) const {
    return probe().visibleFrame(window).value_or(Rect{});
}

::testing::AssertionResult EngineDesktopTest::frameBecomes(WindowId window, Rect expected) {
    if (waitUntil([&] { return frameOf(window) == expected; })) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "the visible frame is " << describe(frameOf(window))
                                         << ", not " << describe(expected);
}

Point EngineDesktopTest::centreOf(Rect r) {
    return {std::floor(r.midX()), std::floor(r.midY())};
}

}  // namespace gf::test
