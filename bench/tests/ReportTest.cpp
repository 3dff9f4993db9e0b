#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "Report.h"

namespace gf::bench {
namespace {

LatencyRun run(const std::string& mover, double p50, double p99, double desktopCpu) {
    LatencyRun r;
    r.mover = mover;
    r.gesture = "move";
    r.rateHz = 500;
    r.motions = 1500;
    r.latency = {1500, p50, p99, p99, p99 + 1, p50};
    r.costs.glimmerfold.cpuPercent = mover == "Glimmerfold" ? 0.8 : 0.0;
    r.costs.server.cpuPercent = desktopCpu - r.costs.glimmerfold.cpuPercent;
    return r;
}

BenchResults sample() {
    BenchResults results;
    results.latencyRuns = {run("Glimmerfold", 4.2, 9.1, 6.0), run("openbox", 0.4, 1.0, 10.0)};
    for (const auto& [rateHz, autoRaise, wakeups] :
         {std::tuple{0, false, 0.4}, {1000, false, 0.6}, {1000, true, 12.0}}) {
        IdleRun& idle = results.idleRuns.emplace_back();
        std::tie(idle.rateHz, idle.autoRaise, idle.glimmerfold.wakeupsPerSecond) =
            std::tie(rateHz, autoRaise, wakeups);
        idle.glimmerfold.cpuPercent = rateHz > 0 ? 0.01 : 0.0;
    }
    for (const auto& [windows, p50] :
         std::vector<std::pair<std::size_t, double>>{{10, 0.8}, {100, 1.0}, {300, 2.0}}) {
        GestureStartRun& start = results.gestureStarts.emplace_back();
        start.windows = windows;
        start.trials = 20;
        start.followingMs = {20, p50, p50 + 0.3, p50 + 0.3, p50 + 0.5, p50};
    }
    AutoRaiseDelayRun& raise = results.autoRaiseDelays.emplace_back();
    raise.delayMs = 100;
    raise.crossings = 20;
    raise.lateMs = {20, 4, 12, 12, 25, 5};
    results.memory = {40 * 1024, 41 * 1024, 41 * 1024 + 2048, 1000, 1000};
    results.startupMs = {400, 250, 260};
    return results;
}

// Each goal against the numbers it must be judged on; a goal found by the start of its text.
TEST(ReportTest, HoldsEachGoalAgainstTheRightNumbers) {
    const std::vector<GoalCheck> checks = checkGoals(sample());
    const std::vector<std::pair<std::string, bool>> expected{
        {"Latency of a move at 500 Hz", false},                          // p50 4.2 ms is over 1 ms
        {"Glimmerfold + openbox + Xvfb CPU while moving at 500", true},  // 6 % against 10 %
        {"No gesture, auto raise off, 1000 Hz", true},  // 0.2 wake-ups more than at rest: noise
        {"No gesture, auto raise on, 1000 Hz", false},  // 12 wake-ups a second is over 10
        {"Auto raise: rest on a window", true},         // p95 12 ms, not the one 25 ms
        {"Keys pressed to gesture begun with 300 windows", true},  // p50 2.0 ms
        {"Keys pressed to gesture begun grows", false},  // +1.2 ms for 90 windows: over 0.64 + 0.5
        {"Resident set after start-up", true},
        {"Resident set not growing", false},  // 2 MB more is growth
    };
    for (const auto& [goal, met] : expected) {
        const auto check = std::ranges::find_if(
            checks, [&](const GoalCheck& c) { return c.goal.starts_with(goal); });
        ASSERT_NE(check, checks.end()) << goal;
        EXPECT_EQ(check->met, met) << goal;
    }
}

}  // namespace
}  // namespace gf::bench
