#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "BenchDesktop.h"
#include "FrameWatcher.h"
#include "GlimmerfoldProcess.h"
#include "Hands.h"
#include "LatencyMatch.h"
#include "MotionPath.h"
#include "ProcessMeter.h"
#include "StackingWatcher.h"
#include "TrayIconFinder.h"
#include "WindowCrowd.h"

namespace gf::bench {
namespace {

using namespace std::chrono_literals;

// The instruments the numbers depend on, on a real bench desktop: if the
// watcher lost or reordered a frame report, or openbox lacked its drag
// bindings, every latency in the tables would be wrong.
class BenchHarnessTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string error;
        desktop_ = BenchDesktop::start({}, &error);
        ASSERT_NE(desktop_, nullptr) << error;
        hands_ = Hands::open(desktop_->displayName(), &error);
        ASSERT_NE(hands_, nullptr) << error;
        window_ = desktop_->startXlogo(300, 250, 200, 150);
        watcher_ = FrameWatcher::open(desktop_->displayName(), window_.frame, &error);
        ASSERT_NE(watcher_, nullptr) << error;
    }

    std::unique_ptr<BenchDesktop> desktop_;
    std::unique_ptr<Hands> hands_;
    BenchWindow window_;
    std::unique_ptr<FrameWatcher> watcher_;
};

TEST_F(BenchHarnessTest, OpenboxsOwnDragIsReportedMotionByMotionInOrder) {
    const FrameReport start = watcher_->latest();
    EXPECT_EQ(start.x, 300);
    EXPECT_EQ(start.y, 250);
    const int x = start.x + 100;
    const int y = start.y + 80;
    hands_->moveTo(x, y);
    hands_->pressKey(test::Keysym::altL);
    hands_->pressButton(1);
    // Openbox starts its drag once the pointer is past the threshold.
    int nudge = 0;
    bool moved = false;
    while (!moved && nudge < 10) {
        hands_->moveTo(x + ++nudge, y);
        moved =
            watcher_->waitForLatest([&](const FrameReport& r) { return r.x != start.x; }, 100ms);
    }
    ASSERT_TRUE(moved) << "openbox has no Alt + drag binding";
    ASSERT_TRUE(watcher_->waitUntilStill(50ms, 2s));
    const FrameReport held = watcher_->latest();
    watcher_->takeReports();

    const MotionPath path(5);
    std::vector<TimedKey> motions;
    for (std::size_t i = 0; i < 12; ++i) {
        const PixelOffset offset = path.at(i);
        motions.push_back({Clock::now(), pairKey(held.x + offset.dx, held.y + offset.dy)});
        hands_->moveTo(x + nudge + offset.dx, y + offset.dy);
        hands_->sync();
        ASSERT_TRUE(watcher_->waitForLatest(
            [&](const FrameReport& r) { return pairKey(r.x, r.y) == motions.back().key; }, 2s))
            << "motion " << i;
    }
    hands_->releaseButton(1);
    hands_->releaseKey(test::Keysym::altL);

    std::vector<TimedKey> reports;
    for (const FrameReport& report : watcher_->takeReports()) {
        reports.push_back({report.time, pairKey(report.x, report.y)});
    }
    const LatencyMatch match = matchMotionsToReports(motions, reports);
    EXPECT_EQ(match.shownExactly, motions.size()) << "every position, in the order sent";
    EXPECT_EQ(match.neverShown, 0u);
    ASSERT_EQ(match.latenciesMs.size(), motions.size());
    for (double latency : match.latenciesMs) {
        EXPECT_GT(latency, 0);
        EXPECT_LT(latency, 2000);
    }
}

TEST_F(BenchHarnessTest, PutsTheWindowBackAndMeasuresTheDesktopsProcesses) {
    ASSERT_TRUE(desktop_->placeWindow(window_, 420, 310, 260, 170));
    EXPECT_TRUE(
        watcher_->waitForLatest([](const FrameReport& r) { return r.x == 420 && r.y == 310; }, 2s));
    const std::optional<Rect> frame = desktop_->probe().frameGeometry(window_.client);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->origin(), (Point{420, 310}));
    ASSERT_TRUE(desktop_->placeWindow(window_, 300, 250, 200, 150));
    EXPECT_EQ(desktop_->probe().frameGeometry(window_.client)->origin(), (Point{300, 250}));

    for (pid_t pid : {desktop_->serverPid(), desktop_->windowManagerPid()}) {
        const ProcessSample sample = sampleProcess(pid);
        ASSERT_TRUE(sample.valid) << pid;
        EXPECT_GT(sample.residentKiB, 1000u);
        EXPECT_FALSE(sample.threads.empty());
    }
}

TEST_F(BenchHarnessTest, TheCrowdStaysClearOfTheWindowAndARaiseIsReportedAsItHappens) {
    std::string error;
    auto crowd = WindowCrowd::open(desktop_->displayName(), &error);
    ASSERT_NE(crowd, nullptr) << error;
    const Rect keepClear{240, 190, 320, 290};
    ASSERT_TRUE(crowd->growTo(40, keepClear));
    const test::DesktopProbe& probe = desktop_->probe();
    std::size_t seen = 0;
    for (test::WindowId client : probe.allClients()) {
        if (probe.classOf(client) == "GlimmerfoldBench") {
            ++seen;
            EXPECT_FALSE(probe.frameGeometry(client)->intersects(keepClear)) << client;
            EXPECT_TRUE(probe.isAbove(client, window_.client)) << "opened later, stacked higher";
        }
    }
    EXPECT_EQ(seen, 40u);

    auto stacking = StackingWatcher::open(desktop_->displayName(), &error);
    ASSERT_NE(stacking, nullptr) << error;
    const test::WindowId lowest = *probe.frameOf(crowd->first());
    ASSERT_TRUE(stacking->expectAbove(window_.frame, lowest));
    const auto asked = Clock::now();
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(desktop_->connection(), window_.client, XCB_CONFIG_WINDOW_STACK_MODE,
                         &above);
    xcb_flush(desktop_->connection());
    const std::optional<Clock::time_point> raised = stacking->waitForAbove(2s);
    ASSERT_TRUE(raised) << "openbox raises a window that asks";
    EXPECT_GT(*raised, asked);
    EXPECT_TRUE(probe.isAbove(window_.client, crowd->first()));
    EXPECT_FALSE(stacking->expectAbove(window_.frame, lowest)) << "already above";
}

TEST_F(BenchHarnessTest, StartUpEndsWhenTheTrayIconIsMappedInTheTray) {
    EXPECT_FALSE(findViewableWindowOfClass(desktop_->connection(), desktop_->trayHostFrame(),
                                           "Glimmerfold"));
    std::string error;
    auto glimmerfold = GlimmerfoldProcess::launch(*desktop_, GLIMMERFOLD_EXECUTABLE, {}, &error);
    ASSERT_NE(glimmerfold, nullptr) << error;
    EXPECT_GT(glimmerfold->startupMs(), 0);
    const auto icon =
        findViewableWindowOfClass(desktop_->connection(), desktop_->trayHostFrame(), "Glimmerfold");
    ASSERT_TRUE(icon);
    EXPECT_NE(*icon, desktop_->trayHostFrame());
    glimmerfold->quit();
    EXPECT_FALSE(glimmerfold->isRunning());
    EXPECT_EQ(classPart(std::string("glimmerfold\0Glimmerfold\0", 24)), "Glimmerfold");
}

}  // namespace
}  // namespace gf::bench
