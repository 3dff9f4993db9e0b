// The fake desktop stands in for the real one in every engine test, so the
// behaviour those tests rely on is pinned down here.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake/FakeDesktop.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

TEST(FakeDesktopTest, VirtualTimeRunsTimersAndQueueWorkInDeadlineOrder) {
    FakeDesktop desktop;
    Platform platform = desktop.platform();
    std::vector<std::string> log;
    auto queue = platform.queues.createSerialQueue("q");
    auto tick = queue->scheduleRepeating(
        8ms, 1ms, [&] { log.push_back("tick@" + std::to_string(desktop.now().count())); });
    auto once = platform.mainThread.scheduleOnce(10ms, [&] { log.push_back("once"); });
    auto repeating = platform.mainThread.scheduleRepeating(20ms, [&] { log.push_back("main"); });

    desktop.runPendingQueueWork();  // the first tick is due at once
    EXPECT_EQ(log, std::vector<std::string>{"tick@0"});
    desktop.advance(20ms);
    EXPECT_EQ(log, (std::vector<std::string>{"tick@0", "tick@8000", "once", "tick@16000", "main"}));
    EXPECT_FALSE(once->isActive());
    EXPECT_EQ(desktop.now(), 20ms);

    tick->cancel();
    queue->async([&] { log.push_back("task"); });
    queue.reset();  // runs what was submitted, like a real queue being destroyed
    EXPECT_EQ(log.back(), "task");
    repeating.reset();
    log.clear();
    desktop.advance(1s);
    EXPECT_TRUE(log.empty());
}

TEST(FakeDesktopTest, WindowsAreLocatedChangedAndRecorded) {
    FakeDesktop desktop;
    Platform platform = desktop.platform();
    const auto back =
        desktop.addWindow(FakeWindowSpec::at({0, 0, 100, 100}, 1).withIdentifier("a"));
    const auto front = desktop.addWindow(FakeWindowSpec::at({50, 50, 100, 100}, 2));
    EXPECT_EQ(desktop.stackingOrder(), (std::vector<std::uint32_t>{front, back}));
    EXPECT_EQ(platform.windowServer.windowAt({60, 60})->windowNumber, front);
    EXPECT_FALSE(platform.windowServer.windowAt({150, 60}));  // right edge is outside
    EXPECT_EQ(platform.applications.identifierOfProcess(1), "a");

    auto handle = platform.windowControl.windowsOfProcess(1)->front();
    EXPECT_TRUE(handle->setPosition({10, 20}));
    EXPECT_TRUE(handle->raise());
    EXPECT_EQ(desktop.frameOf(back), (Rect{10, 20, 100, 100}));
    EXPECT_EQ(desktop.stackingOrder().front(), back);
    ASSERT_EQ(desktop.writes().size(), 2u);
    EXPECT_EQ(desktop.writes()[1].kind, WindowWrite::Kind::raise);

    desktop.removeWindow(back);
    EXPECT_FALSE(handle->position());
    EXPECT_FALSE(handle->setPosition({0, 0}));
}

TEST(FakeDesktopTest, InputReachesTapsAndMonitorsAsWanted) {
    FakeDesktop desktop;
    Platform platform = desktop.platform();
    std::vector<InputEvent> events;
    int monitored = 0;
    auto tap = platform.input.createEventTap([&](const InputEvent& e) { events.push_back(e); });
    auto monitor = platform.input.addPointerMovedMonitor([&](std::uint64_t) { ++monitored; });

    desktop.movePointer({5, 5});  // motion is not wanted yet
    desktop.pressModifiers(ModifierFlag::control);
    tap->setPointerMotionWanted(true);
    desktop.movePointer({6, 7});
    EXPECT_EQ(events, (std::vector<InputEvent>{
                          {InputEventType::flagsChanged, ModifierFlag::control, {5, 5}},
                          {InputEventType::mouseMoved, ModifierFlag::control, {6, 7}}}));
    EXPECT_EQ(monitored, 2);

    desktop.interruptEventTap();
    EXPECT_EQ(events.back().type, InputEventType::tapDisabledByTimeout);
    EXPECT_FALSE(desktop.isEventTapEnabled());
    tap.reset();
    monitor.reset();
    EXPECT_FALSE(desktop.hasEventTap());
    EXPECT_EQ(desktop.pointerMonitorCount(), 0u);
}

}  // namespace
}  // namespace gf::test
