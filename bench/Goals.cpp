#include "Goals.h"

#include "ReportFigures.h"

namespace gf::bench {

namespace {

constexpr double kMoveLatencyP50GoalMs = 1.0;
constexpr double kMoveLatencyP99GoalMs = 2.0;
constexpr double kResizeLatencyP99GoalMs = 8.5;
constexpr double kDesktopCostGoalRatio = 1.0;
constexpr double kMoveCpuGoalPercent = 3.0;
constexpr int kMoveCpuGoalRateHz = 1000;
constexpr double kIdleCpuGoalPercent = 0.1;
constexpr double kAutoRaiseWakeupGoalPerSecond = 10;
constexpr double kAutoRaiseLateGoalMs = 20;
constexpr double kGestureStartGoalMs = 2.0;
// Linear growth is judged on medians of a few dozen trials timed to a quarter
// of a millisecond; less than this beyond the line is noise.
constexpr double kGestureStartGrowthToleranceMs = 0.5;
// Anything pointer motion caused would show as hundreds a second; what is
// left at rest (timers, the toolkit) varies by a fraction of one.
constexpr double kIdleWakeupTolerancePerSecond = 1.0;
constexpr double kResidentGoalKiB = 60.0 * 1024;
// The allocator keeps and returns pages in chunks; less than this is not growth.
constexpr double kResidentGrowthToleranceKiB = 512;

// The goal holds at the largest scene; growth from the smallest scene to the
// largest may be at most what the line through the two smallest predicts.
void gestureStartGoals(const BenchResults& results, std::vector<GoalCheck>& checks) {
    const std::vector<const GestureStartRun*> runs = measuredGestureStarts(results);
    if (runs.empty()) {
        return;
    }
    const GestureStartRun& largest = *runs.back();
    checks.push_back({"Keys pressed to gesture begun with " + std::to_string(largest.windows) +
                          " windows open: p50 ≤ " + fixed(kGestureStartGoalMs, 0) + " ms",
                      "p50 " + fixed(largest.followingMs.p50, 2) + " ms, p95 " +
                          fixed(largest.followingMs.p95, 2) + " ms",
                      largest.followingMs.p50 <= kGestureStartGoalMs});
    if (runs.size() < 3) {
        return;
    }
    const GestureStartRun& smallest = *runs.front();
    const GestureStartRun& middle = *runs[1];
    const double firstGrowth = middle.followingMs.p50 - smallest.followingMs.p50;
    const double growth = largest.followingMs.p50 - smallest.followingMs.p50;
    const double span = static_cast<double>(largest.windows - smallest.windows) /
                        static_cast<double>(middle.windows - smallest.windows);
    const double allowed = span * std::max(firstGrowth, 0.0) + kGestureStartGrowthToleranceMs;
    checks.push_back({"Keys pressed to gesture begun grows no faster than linearly (" +
                          std::to_string(smallest.windows) + " → " +
                          std::to_string(largest.windows) + " windows ≤ " + fixed(span, 2) + " × " +
                          std::to_string(smallest.windows) + " → " +
                          std::to_string(middle.windows) + ", + " +
                          fixed(kGestureStartGrowthToleranceMs, 1) + " ms)",
                      "+" + fixed(growth, 2) + " ms against +" + fixed(firstGrowth, 2) +
                          " ms (at most " + fixed(allowed, 2) + " ms)",
                      growth <= allowed});
}

void latencyGoals(const BenchResults& results, std::vector<GoalCheck>& checks) {
    const std::vector<int> rates = latencyRates(results);
    for (int rate : rates) {
        if (const LatencyRun* run = findRun(results, "Glimmerfold", "move", rate, false)) {
            checks.push_back({"Latency of a move at " + std::to_string(rate) + " Hz: p50 ≤ " +
                                  fixed(kMoveLatencyP50GoalMs, 1) + " ms, p99 ≤ " +
                                  fixed(kMoveLatencyP99GoalMs, 1) + " ms",
                              "p50 " + fixed(run->latency.p50, 2) + " ms, p99 " +
                                  fixed(run->latency.p99, 2) + " ms",
                              run->latency.p50 <= kMoveLatencyP50GoalMs &&
                                  run->latency.p99 <= kMoveLatencyP99GoalMs});
        }
    }
    for (int rate : rates) {
        if (const LatencyRun* run = findRun(results, "Glimmerfold", "resize", rate, false)) {
            checks.push_back({"Latency of a resize at " + std::to_string(rate) + " Hz: p99 ≤ " +
                                  fixed(kResizeLatencyP99GoalMs, 1) + " ms",
                              "p99 " + fixed(run->latency.p99, 2) + " ms",
                              run->latency.p99 <= kResizeLatencyP99GoalMs});
        }
    }
}

void costGoals(const BenchResults& results, std::vector<GoalCheck>& checks) {
    for (int rate : latencyRates(results)) {
        const LatencyRun* ours = findRun(results, "Glimmerfold", "move", rate, false);
        const LatencyRun* theirs = findRun(results, "openbox", "move", rate, false);
        if (rate < 500 || ours == nullptr || theirs == nullptr ||
            theirs->costs.totalCpuPercent() <= 0) {
            continue;
        }
        const double share = ours->costs.totalCpuPercent() / theirs->costs.totalCpuPercent();
        checks.push_back(
            {"Glimmerfold + openbox + Xvfb CPU while moving at " + std::to_string(rate) + " Hz ≤ " +
                 fixed(kDesktopCostGoalRatio, 1) + " × openbox's own drag",
             fixed(ours->costs.totalCpuPercent(), 1) + " % vs " +
                 fixed(theirs->costs.totalCpuPercent(), 1) + " % = " + fixed(share, 2) + " ×",
             share <= kDesktopCostGoalRatio});
    }
    for (bool autoRaise : {false, true}) {
        if (const LatencyRun* run =
                findRun(results, "Glimmerfold", "move", kMoveCpuGoalRateHz, autoRaise)) {
            checks.push_back({"Glimmerfold's CPU during a move" +
                                  std::string(autoRaise ? " (auto raise on)" : "") + " at " +
                                  std::to_string(kMoveCpuGoalRateHz) + " Hz ≤ " +
                                  fixed(kMoveCpuGoalPercent, 0) + " %",
                              fixed(run->costs.glimmerfold.cpuPercent, 2) + " %",
                              run->costs.glimmerfold.cpuPercent <= kMoveCpuGoalPercent});
        }
    }
}

void idleGoals(const BenchResults& results, std::vector<GoalCheck>& checks) {
    if (const IdleRun* rest = findIdle(results, 0, false)) {
        for (const IdleRun& run : results.idleRuns) {
            if (run.rateHz == 0 || run.autoRaise) {
                continue;
            }
            const double extra =
                run.glimmerfold.wakeupsPerSecond - rest->glimmerfold.wakeupsPerSecond;
            checks.push_back({"No gesture, auto raise off, " + std::to_string(run.rateHz) +
                                  " Hz motion: no wake-ups caused by motion, CPU < " +
                                  fixed(kIdleCpuGoalPercent, 1) + " %",
                              fixed(run.glimmerfold.wakeupsPerSecond, 1) + " wake-ups/s (" +
                                  fixed(rest->glimmerfold.wakeupsPerSecond, 1) + " at rest), CPU " +
                                  fixed(run.glimmerfold.cpuPercent, 3) + " %",
                              extra < kIdleWakeupTolerancePerSecond &&
                                  run.glimmerfold.cpuPercent < kIdleCpuGoalPercent});
        }
    }
    for (const IdleRun& run : results.idleRuns) {
        if (run.rateHz == 0 || !run.autoRaise) {
            continue;
        }
        checks.push_back({"No gesture, auto raise on, " + std::to_string(run.rateHz) +
                              " Hz motion: ≤ " + fixed(kAutoRaiseWakeupGoalPerSecond, 0) +
                              " wake-ups/s, CPU ≤ " + fixed(kIdleCpuGoalPercent, 1) + " %",
                          fixed(run.glimmerfold.wakeupsPerSecond, 1) + " wake-ups/s, CPU " +
                              fixed(run.glimmerfold.cpuPercent, 3) + " %",
                          run.glimmerfold.wakeupsPerSecond <= kAutoRaiseWakeupGoalPerSecond &&
                              run.glimmerfold.cpuPercent <= kIdleCpuGoalPercent});
    }
}

void autoRaiseGoals(const BenchResults& results, std::vector<GoalCheck>& checks) {
    for (const AutoRaiseDelayRun& run : results.autoRaiseDelays) {
        if (run.crossings == 0) {
            continue;
        }
        checks.push_back({"Auto raise: rest on a window to its raise, minus the delay, p95 ≤ " +
                              fixed(kAutoRaiseLateGoalMs, 0) + " ms",
                          "p50 " + fixed(run.lateMs.p50, 1) + " ms, p95 " +
                              fixed(run.lateMs.p95, 1) + " ms, max " + fixed(run.lateMs.max, 1) +
                              " ms",
                          run.lateMs.p95 <= kAutoRaiseLateGoalMs});
    }
}

void memoryGoals(const BenchResults& results, std::vector<GoalCheck>& checks) {
    const MemoryResult& memory = results.memory;
    if (memory.startupKiB > 0) {
        checks.push_back({"Resident set after start-up < 60 MB", megabytes(memory.startupKiB),
                          memory.startupKiB < kResidentGoalKiB});
    }
    if (memory.gesturesTried > 0 && memory.afterWarmUpKiB > 0) {
        const double growth = memory.afterGesturesKiB - memory.afterWarmUpKiB;
        checks.push_back({"Resident set not growing across " +
                              std::to_string(memory.gesturesTried) + " gestures",
                          fixed(growth, 0) + " KiB from gesture " +
                              std::to_string(memory.gesturesTried / 10) + " to " +
                              std::to_string(memory.gesturesTried) + " (" +
                              std::to_string(memory.gesturesTaken) + " followed)",
                          growth <= kResidentGrowthToleranceKiB &&
                              memory.gesturesTaken * 10 >= memory.gesturesTried * 9});
    }
}

}  // namespace

std::vector<GoalCheck> checkGoals(const BenchResults& results) {
    std::vector<GoalCheck> checks;
    latencyGoals(results, checks);
    costGoals(results, checks);
    idleGoals(results, checks);
    autoRaiseGoals(results, checks);
    gestureStartGoals(results, checks);
    memoryGoals(results, checks);
    return checks;
}

}  // namespace gf::bench
