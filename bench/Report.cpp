#include "Report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <sstream>

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

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string megabytes(double kib) {
    return fixed(kib / 1024.0, 1) + " MB";
}

const LatencyRun* findRun(const BenchResults& results, const std::string& mover,
                          const std::string& gesture, int rateHz, bool autoRaise) {
    for (const LatencyRun& run : results.latencyRuns) {
        if (run.mover == mover && run.gesture == gesture && run.rateHz == rateHz &&
            run.autoRaise == autoRaise && run.problem.empty()) {
            return &run;
        }
    }
    return nullptr;
}

const IdleRun* findIdle(const BenchResults& results, int rateHz, bool autoRaise) {
    for (const IdleRun& run : results.idleRuns) {
        if (run.rateHz == rateHz && run.autoRaise == autoRaise) {
            return &run;
        }
    }
    return nullptr;
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[(values.size() - 1) / 2];
}

std::string ratio(double numerator, double denominator) {
    return denominator > 0 ? fixed(numerator / denominator, 2) : "-";
}

std::string inputName(int rateHz) {
    return rateHz == 0 ? "none (at rest)" : std::to_string(rateHz) + " Hz motion, no key held";
}

void latencyTable(std::ostringstream& md, const BenchResults& results) {
    md << "## Latency: pointer motion to the frame at the matching place (ms)\n\n"
       << "| gesture | input | mover | motions | p50 | p95 | p99 | max | shown exactly | "
          "p50 ÷ openbox | p99 ÷ openbox |\n"
       << "|---|---|---|---|---|---|---|---|---|---|---|\n";
    for (const LatencyRun& run : results.latencyRuns) {
        md << "| " << run.gesture << (run.autoRaise ? " (auto raise on)" : "") << " | "
           << run.rateHz << " Hz | " << run.mover << " | ";
        if (!run.problem.empty()) {
            md << run.motions << " | " << run.problem << " | | | | | | |\n";
            continue;
        }
        md << run.motions << " | " << fixed(run.latency.p50, 2) << " | "
           << fixed(run.latency.p95, 2) << " | " << fixed(run.latency.p99, 2) << " | "
           << fixed(run.latency.max, 2) << " | "
           << fixed(100.0 * static_cast<double>(run.shownExactly) /
                        static_cast<double>(std::max<std::size_t>(run.motions, 1)),
                    0)
           << " % | ";
        const LatencyRun* reference = findRun(results, "openbox", run.gesture, run.rateHz, false);
        if (run.mover == "Glimmerfold" && reference != nullptr) {
            md << ratio(run.latency.p50, reference->latency.p50) << " | "
               << ratio(run.latency.p99, reference->latency.p99) << " |\n";
        } else {
            md << " | |\n";
        }
    }
    md << "\n";
}

void costTable(std::ostringstream& md, const BenchResults& results) {
    md << "## CPU and wake-ups per second of gesture\n\n"
       << "CPU in % of one core. Wake-ups are voluntary context switches of all of "
          "Glimmerfold's threads.\n\n"
       << "| gesture | input | mover | Glimmerfold CPU | Glimmerfold wake-ups/s | openbox CPU | "
          "Xvfb CPU | all three | all three ÷ openbox's drag |\n"
       << "|---|---|---|---|---|---|---|---|---|\n";
    for (const LatencyRun& run : results.latencyRuns) {
        if (!run.problem.empty()) {
            continue;
        }
        md << "| " << run.gesture << (run.autoRaise ? " (auto raise on)" : "") << " | "
           << run.rateHz << " Hz | " << run.mover << " | "
           << fixed(run.costs.glimmerfold.cpuPercent, 2) << " % | "
           << fixed(run.costs.glimmerfold.wakeupsPerSecond, 0) << " | "
           << fixed(run.costs.windowManager.cpuPercent, 1) << " % | "
           << fixed(run.costs.server.cpuPercent, 1) << " % | "
           << fixed(run.costs.totalCpuPercent(), 1) << " % | ";
        const LatencyRun* reference = findRun(results, "openbox", run.gesture, run.rateHz, false);
        if (run.mover == "Glimmerfold" && reference != nullptr) {
            md << ratio(run.costs.totalCpuPercent(), reference->costs.totalCpuPercent());
        }
        md << " |\n";
    }
    md << "\n";
}

void idleTable(std::ostringstream& md, const BenchResults& results) {
    md << "## Glimmerfold with no gesture\n\n"
       << "| input | auto raise | CPU | wake-ups/s | busiest threads (wake-ups/s) |\n"
       << "|---|---|---|---|---|\n";
    for (const IdleRun& run : results.idleRuns) {
        std::vector<std::pair<double, std::string>> threads;
        for (const auto& [name, rate] : run.glimmerfold.wakeupsPerSecondByThread) {
            threads.emplace_back(rate, name);
        }
        std::sort(threads.rbegin(), threads.rend());
        std::string busiest;
        for (std::size_t i = 0; i < threads.size() && i < 3; ++i) {
            if (threads[i].first < 0.05) {
                break;
            }
            busiest += (busiest.empty() ? "" : ", ") + threads[i].second + " " +
                       fixed(threads[i].first, 1);
        }
        md << "| " << inputName(run.rateHz) << " | " << (run.autoRaise ? "on" : "off") << " | "
           << fixed(run.glimmerfold.cpuPercent, 3) << " % | "
           << fixed(run.glimmerfold.wakeupsPerSecond, 1) << " | "
           << (busiest.empty() ? "-" : busiest) << " |\n";
    }
    md << "\n";
}

void memoryAndStartup(std::ostringstream& md, const BenchResults& results) {
    const MemoryResult& memory = results.memory;
    md << "## Memory (resident set size)\n\n"
       << "| after start-up | after " << memory.gesturesTried / 10 << " gestures | after "
       << memory.gesturesTried << " gestures | gestures the window followed |\n"
       << "|---|---|---|---|\n"
       << "| " << megabytes(memory.startupKiB) << " | " << megabytes(memory.afterWarmUpKiB) << " | "
       << megabytes(memory.afterGesturesKiB) << " | " << memory.gesturesTaken << " of "
       << memory.gesturesTried << " |\n\n";
    md << "## Start-up: exec to the tray icon mapped in the tray host\n\n";
    if (results.startupMs.empty()) {
        md << "No launch showed its tray icon.\n\n";
        return;
    }
    md << "| launches | median | first (cold) | fastest | slowest |\n|---|---|---|---|---|\n"
       << "| " << results.startupMs.size() << " | " << fixed(median(results.startupMs), 0)
       << " ms | " << fixed(results.startupMs.front(), 0) << " ms | "
       << fixed(*std::min_element(results.startupMs.begin(), results.startupMs.end()), 0)
       << " ms | "
       << fixed(*std::max_element(results.startupMs.begin(), results.startupMs.end()), 0)
       << " ms |\n\n";
}

QJsonObject toJson(const Distribution& d) {
    return {{"count", static_cast<qint64>(d.count)},
            {"p50", d.p50},
            {"p95", d.p95},
            {"p99", d.p99},
            {"max", d.max},
            {"mean", d.mean}};
}

QJsonObject toJson(const ProcessUsage& usage) {
    QJsonObject threads;
    for (const auto& [name, rate] : usage.wakeupsPerSecondByThread) {
        threads.insert(QString::fromStdString(name), rate);
    }
    QJsonObject cpu;
    for (const auto& [name, percent] : usage.cpuPercentByThread) {
        cpu.insert(QString::fromStdString(name), percent);
    }
    return {{"cpuPercent", usage.cpuPercent},
            {"wakeupsPerSecond", usage.wakeupsPerSecond},
            {"wakeupsPerSecondByThread", threads},
            {"cpuPercentByThread", cpu}};
}

std::vector<const GestureStartRun*> measuredGestureStarts(const BenchResults& results) {
    std::vector<const GestureStartRun*> runs;
    for (const GestureStartRun& run : results.gestureStarts) {
        if (run.trials > 0) {
            runs.push_back(&run);
        }
    }
    std::sort(runs.begin(), runs.end(),
              [](const auto* a, const auto* b) { return a->windows < b->windows; });
    return runs;
}

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

std::string distributionCells(const Distribution& d, int decimals) {
    return fixed(d.p50, decimals) + " | " + fixed(d.p95, decimals) + " | " + fixed(d.max, decimals);
}

void gestureStartTable(std::ostringstream& md, const BenchResults& results) {
    if (results.gestureStarts.empty()) {
        return;
    }
    md << "## Gesture start: keys pressed to the window following (ms)\n\n"
       << "From the moment the second key is sent, with probe motions every 0.25 ms after it: "
          "by when the gesture had read the pointer position it measures from, by when it "
          "had read the pointer to move the window for the first time (begun), and when "
          "the frame reported its first new position.\n\n"
       << "| windows open | trials | read from p50 | p95 | max | begun p50 | p95 | max | "
          "frame moved p50 | p95 | max |\n"
       << "|---|---|---|---|---|---|---|---|---|---|---|\n";
    for (const GestureStartRun& run : results.gestureStarts) {
        md << "| " << run.windows << " | " << run.trials << " | ";
        if (run.trials == 0) {
            md << run.problem << " | | | | | | | | |\n";
            continue;
        }
        md << distributionCells(run.pointerReadMs, 2) << " | "
           << distributionCells(run.followingMs, 2) << " | "
           << distributionCells(run.frameMovedMs, 2) << " |\n";
    }
    md << "\n";
}

void autoRaiseTable(std::ostringstream& md, const BenchResults& results) {
    if (results.autoRaiseDelays.empty()) {
        return;
    }
    md << "## Auto raise: last motion onto a window to its raise, minus the delay (ms)\n\n"
       << "| delay | crossings | p50 | p95 | max |\n|---|---|---|---|---|\n";
    for (const AutoRaiseDelayRun& run : results.autoRaiseDelays) {
        md << "| " << fixed(run.delayMs, 0) << " ms | " << run.crossings << " | ";
        if (run.crossings == 0) {
            md << run.problem << " | | |\n";
            continue;
        }
        md << distributionCells(run.lateMs, 1) << " |\n";
    }
    md << "\n";
}

std::vector<int> latencyRates(const BenchResults& results) {
    std::vector<int> rates;
    for (const LatencyRun& run : results.latencyRuns) {
        if (std::find(rates.begin(), rates.end(), run.rateHz) == rates.end()) {
            rates.push_back(run.rateHz);
        }
    }
    return rates;
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

std::string markdownReport(const BenchResults& results) {
    std::ostringstream md;
    md << "# Glimmerfold benchmark\n\n"
       << "Run " << results.started << " (" << results.mode << " run) on " << results.machine
       << ". Private Xvfb 1280 × 800, openbox, trayer, one xlogo window; input played "
          "through XTest.\n\n";
    const std::vector<GoalCheck> goals = checkGoals(results);
    md << "## Goals\n\n| goal | measured | met |\n|---|---|---|\n";
    for (const GoalCheck& check : goals) {
        md << "| " << check.goal << " | " << check.measured << " | "
           << (check.met ? "yes" : "**no**") << " |\n";
    }
    md << "\n";
    latencyTable(md, results);
    costTable(md, results);
    idleTable(md, results);
    gestureStartTable(md, results);
    autoRaiseTable(md, results);
    memoryAndStartup(md, results);
    if (!results.problems.empty()) {
        md << "## Problems\n\n";
        for (const std::string& problem : results.problems) {
            md << "- " << problem << "\n";
        }
        md << "\n";
    }
    return md.str();
}

std::string jsonReport(const BenchResults& results) {
    QJsonArray latency;
    for (const LatencyRun& run : results.latencyRuns) {
        QJsonArray raw;
        for (double ms : run.latenciesMs) {
            raw.append(ms);
        }
        latency.append(QJsonObject{
            {"mover", QString::fromStdString(run.mover)},
            {"gesture", QString::fromStdString(run.gesture)},
            {"rateHz", run.rateHz},
            {"autoRaise", run.autoRaise},
            {"motions", static_cast<qint64>(run.motions)},
            {"seconds", run.seconds},
            {"latencyMs", toJson(run.latency)},
            {"everyLatencyMs", raw},
            {"shownExactly", static_cast<qint64>(run.shownExactly)},
            {"neverShown", static_cast<qint64>(run.neverShown)},
            {"strayReports", static_cast<qint64>(run.strayReports)},
            {"glimmerfold", toJson(run.costs.glimmerfold)},
            {"openbox", toJson(run.costs.windowManager)},
            {"xvfb", toJson(run.costs.server)},
            {"desktopCpuPercent", run.costs.totalCpuPercent()},
            {"problem", QString::fromStdString(run.problem)},
        });
    }
    QJsonArray idle;
    for (const IdleRun& run : results.idleRuns) {
        idle.append(QJsonObject{{"rateHz", run.rateHz},
                                {"autoRaise", run.autoRaise},
                                {"seconds", run.seconds},
                                {"glimmerfold", toJson(run.glimmerfold)}});
    }
    QJsonArray gestureStarts;
    for (const GestureStartRun& run : results.gestureStarts) {
        gestureStarts.append(QJsonObject{{"windows", static_cast<qint64>(run.windows)},
                                         {"trials", static_cast<qint64>(run.trials)},
                                         {"pointerReadMs", toJson(run.pointerReadMs)},
                                         {"followingMs", toJson(run.followingMs)},
                                         {"frameMovedMs", toJson(run.frameMovedMs)},
                                         {"problem", QString::fromStdString(run.problem)}});
    }
    QJsonArray autoRaiseDelays;
    for (const AutoRaiseDelayRun& run : results.autoRaiseDelays) {
        autoRaiseDelays.append(QJsonObject{{"delayMs", run.delayMs},
                                           {"crossings", static_cast<qint64>(run.crossings)},
                                           {"lateMs", toJson(run.lateMs)},
                                           {"problem", QString::fromStdString(run.problem)}});
    }
    QJsonArray startup;
    for (double ms : results.startupMs) {
        startup.append(ms);
    }
    QJsonArray goals;
    for (const GoalCheck& check : checkGoals(results)) {
        goals.append(QJsonObject{{"goal", QString::fromStdString(check.goal)},
                                 {"measured", QString::fromStdString(check.measured)},
                                 {"met", check.met}});
    }
    QJsonArray problems;
    for (const std::string& problem : results.problems) {
        problems.append(QString::fromStdString(problem));
    }
    const MemoryResult& memory = results.memory;
    const QJsonObject root{
        {"mode", QString::fromStdString(results.mode)},
        {"started", QString::fromStdString(results.started)},
        {"machine", QString::fromStdString(results.machine)},
        {"goals", goals},
        {"latency", latency},
        {"idle", idle},
        {"gestureStart", gestureStarts},
        {"autoRaiseDelay", autoRaiseDelays},
        {"memory", QJsonObject{{"startupKiB", memory.startupKiB},
                               {"afterWarmUpKiB", memory.afterWarmUpKiB},
                               {"afterGesturesKiB", memory.afterGesturesKiB},
                               {"gesturesTried", static_cast<qint64>(memory.gesturesTried)},
                               {"gesturesTaken", static_cast<qint64>(memory.gesturesTaken)}}},
        {"startupMs", startup},
        {"problems", problems},
    };
    return QJsonDocument(root).toJson(QJsonDocument::Indented).toStdString();
}

}  // namespace gf::bench
