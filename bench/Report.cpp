#include "Report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "ReportFigures.h"

namespace gf::bench {

namespace {

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

}  // namespace

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
