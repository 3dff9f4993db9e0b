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

constexpr double kLatencyP50GoalMs = 5.0;
constexpr double kLatencyP99GoalMs = 8.5;
constexpr double kDesktopCostGoalRatio = 0.7;
constexpr double kIdleCpuGoalPercent = 0.1;
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

}  // namespace

std::vector<GoalCheck> checkGoals(const BenchResults& results) {
    std::vector<GoalCheck> checks;
    std::vector<int> rates;
    for (const LatencyRun& run : results.latencyRuns) {
        if (std::find(rates.begin(), rates.end(), run.rateHz) == rates.end()) {
            rates.push_back(run.rateHz);
        }
    }
    for (const std::string gesture : {"move", "resize"}) {
        for (int rate : rates) {
            const LatencyRun* run = findRun(results, "Glimmerfold", gesture, rate, false);
            if (run == nullptr) {
                continue;
            }
            checks.push_back(
                {"Latency of a " + gesture + " at " + std::to_string(rate) + " Hz: p50 ≤ " +
                     fixed(kLatencyP50GoalMs, 1) + " ms, p99 ≤ " + fixed(kLatencyP99GoalMs, 1) +
                     " ms",
                 "p50 " + fixed(run->latency.p50, 2) + " ms, p99 " + fixed(run->latency.p99, 2) +
                     " ms",
                 run->latency.p50 <= kLatencyP50GoalMs && run->latency.p99 <= kLatencyP99GoalMs});
        }
    }
    const LatencyRun* ours = findRun(results, "Glimmerfold", "move", 500, false);
    const LatencyRun* theirs = findRun(results, "openbox", "move", 500, false);
    if (ours != nullptr && theirs != nullptr && theirs->costs.totalCpuPercent() > 0) {
        const double share = ours->costs.totalCpuPercent() / theirs->costs.totalCpuPercent();
        checks.push_back({"Glimmerfold + openbox + Xvfb CPU while moving at 500 Hz ≤ " +
                              fixed(kDesktopCostGoalRatio, 1) + " × openbox's own drag",
                          fixed(ours->costs.totalCpuPercent(), 1) + " % vs " +
                              fixed(theirs->costs.totalCpuPercent(), 1) +
                              " % = " + fixed(share, 2) + " ×",
                          share <= kDesktopCostGoalRatio});
    }
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
    for (const LatencyRun& run : results.latencyRuns) {
        if (run.mover != "Glimmerfold" || !run.problem.empty() || run.rateHz < 500) {
            continue;
        }
        const double limit = run.rateHz >= 1000 ? 2.0 : 1.0;
        checks.push_back({"Glimmerfold's CPU during a " + run.gesture +
                              (run.autoRaise ? " (auto raise on)" : "") + " at " +
                              std::to_string(run.rateHz) + " Hz < " + fixed(limit, 0) + " %",
                          fixed(run.costs.glimmerfold.cpuPercent, 2) + " %",
                          run.costs.glimmerfold.cpuPercent < limit});
    }
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
