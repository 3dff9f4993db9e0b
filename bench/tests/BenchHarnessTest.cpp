#include <gtest/gtest.h>

#include <chrono>
#include <utility>

#include "BenchStage.h"
#include "FrameWatcher.h"
#include "LatencyMatch.h"
#include "MotionPath.h"
#include "StackingWatcher.h"
#include "WindowCrowd.h"

namespace gf::bench {
namespace {

using namespace std::chrono_literals;

// The instruments on a real bench desktop: a lost or reordered frame report, or openbox without
// its drag binding, would make every latency in the tables wrong.
class BenchHarnessTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string error;
        desktop_ = test::X11Desktop::start(BenchStage::desktopOptions(), &error);
        ASSERT_NE(desktop_, nullptr) << error;
        stage_ = std::make_unique<BenchStage>(*desktop_);
    }

    std::unique_ptr<test::X11Desktop> desktop_;
    std::unique_ptr<BenchStage> stage_;
};

TEST_F(BenchHarnessTest, OpenboxsOwnDragIsReportedMotionByMotionInOrder) {
    FrameWatcher& watcher = stage_->watcher();
    test::XTestDriver& hands = stage_->hands();
    const FrameReport start = watcher.latest();
    EXPECT_EQ(std::pair(start.x, start.y), std::pair(300, 250));
    auto [x, y] = stage_->grabPoint(Gesture::move);
    hands.sendPointerTo(x, y);
    stage_->pressFor(Mover::openbox, Gesture::move);
    bool moved = false;  // openbox starts its drag once the pointer is past a threshold
    for (int nudge = 0; !moved && nudge < 10; ++nudge) {
        hands.sendPointerTo(++x, y);
        moved = watcher.waitForLatest([&](const FrameReport& r) { return r.x != start.x; }, 500ms);
    }
    ASSERT_TRUE(moved) << "openbox has no Alt + drag binding";
    // A loaded openbox may still be catching up with the nudges, so the frame is read against
    // the pointer from the one report that can only answer this step down.
    hands.sendPointerTo(x, ++y);
    ASSERT_TRUE(
        watcher.waitForLatest([&](const FrameReport& r) { return r.y == start.y + 1; }, 2s));
    const FrameReport held = watcher.latest();
    watcher.takeReports();

    const MotionPath path(5);
    std::vector<TimedKey> motions;
    for (std::size_t i = 0; i < 12; ++i) {
        const PixelOffset offset = path.at(i);
        motions.push_back({Clock::now(), pairKey(held.x + offset.dx, held.y + offset.dy)});
        hands.sendPointerTo(x + offset.dx, y + offset.dy);
        hands.sync();
        ASSERT_TRUE(watcher.waitForLatest(
            [&](const FrameReport& r) { return pairKey(r.x, r.y) == motions.back().key; }, 2s))
            << "motion " << i;
    }
    stage_->letGo(Mover::openbox, Gesture::move, 10ms);

    std::vector<TimedKey> reports;
    for (const FrameReport& report : watcher.takeReports()) {
        reports.push_back({report.time, pairKey(report.x, report.y)});
    }
    const LatencyMatch match = matchMotionsToReports(motions, reports);
    EXPECT_EQ(match.shownExactly, motions.size()) << "every position, in the order sent";
    EXPECT_EQ(match.neverShown, 0u);
    ASSERT_EQ(match.latenciesMs.size(), motions.size());
    for (double latency : match.latenciesMs) {
        EXPECT_TRUE(latency > 0 && latency < 2000) << latency;
    }
}

TEST_F(BenchHarnessTest, ARaiseIsReportedAsItHappens) {
    std::string error;
    auto crowd = WindowCrowd::open(desktop_->displayName(), &error);
    ASSERT_NE(crowd, nullptr) << error;
    ASSERT_TRUE(crowd->growTo(40, Rect{240, 190, 320, 290}));

    auto stacking = StackingWatcher::open(desktop_->displayName(), &error);
    ASSERT_NE(stacking, nullptr) << error;
    const test::WindowId lowest = *desktop_->probe().frameOf(crowd->first());
    ASSERT_TRUE(stacking->expectAbove(stage_->frame(), lowest));
    const auto asked = Clock::now();
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(desktop_->connection(), stage_->client(), XCB_CONFIG_WINDOW_STACK_MODE,
                         &above);
    xcb_flush(desktop_->connection());
    const std::optional<Clock::time_point> raised = stacking->waitForAbove(2s);
    ASSERT_TRUE(raised) << "openbox raises a window that asks";
    EXPECT_GT(*raised, asked);
    EXPECT_TRUE(desktop_->probe().isAbove(stage_->client(), crowd->first()));
    EXPECT_FALSE(stacking->expectAbove(stage_->frame(), lowest)) << "already above";
}

}  // namespace
}  // namespace gf::bench
