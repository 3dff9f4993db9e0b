#include "Bench.h"

#include <array>
#include <chrono>
#include <iostream>
#include <sstream>
#include <thread>

#include "CrowdBench.h"
#include "MotionSchedule.h"
#include "ProcessMeter.h"
#include "x11/WaitUntil.h"

namespace gf::bench {

namespace {

using namespace std::chrono_literals;

constexpr int kMaxNudges = 40;
constexpr auto kNudgeWait = 10ms;
constexpr auto kStill = 40ms;
// Longer than a tick: once the frame has not changed for this long after the
// keys are let go, the gesture's last write has landed.
constexpr auto kStillAfterQuickGesture = 15ms;
constexpr auto kCatchUpTimeout = 1s;
constexpr auto kLaunchTimeout = 15s;

test::GlimmerfoldLauncher::Options launchOptions(const std::filesystem::path& glimmerfold) {
    test::GlimmerfoldLauncher::Options options;
    options.program = glimmerfold.string();
    return options;
}

}  // namespace

Bench::Bench(test::X11Desktop& desktop, std::filesystem::path glimmerfold, BenchPlan plan)
    : plan_(std::move(plan)), stage_(desktop), launcher_(desktop, launchOptions(glimmerfold)) {}

Bench::~Bench() {
    quitGlimmerfold();
}

BenchResults Bench::run() {
    BenchResults results;
    results.mode = plan_.smoke ? "smoke" : "full";
    runPart("start-up", [&] { measureStartups(results); });
    if (!glimmerfold_) {
        return results;
    }
    // Given a moment to finish what start-up set in motion before anything is counted.
    std::this_thread::sleep_for(plan_.smoke ? 200ms : 1s);
    results.memory.startupKiB = static_cast<double>(sampleProcess(glimmerfold_->pid()).residentKiB);
    if (plan_.withIdle) {
        runPart("no gesture", [&] {
            results.idleRuns.push_back(measureIdle(0, false));
            for (int rate : plan_.ratesHz) {
                if (rate >= 500 || plan_.smoke) {
                    results.idleRuns.push_back(measureIdle(rate, false));
                }
            }
        });
    }
    if (plan_.withMemory) {
        runPart("gestures for memory", [&] { measureMemory(results); });
    }
    if (plan_.withLatency) {
        runPart("latency", [&] {
            for (int rate : plan_.ratesHz) {
                for (Gesture gesture : {Gesture::move, Gesture::resize}) {
                    if (gesture == Gesture::resize && !plan_.withResize) {
                        continue;
                    }
                    results.latencyRuns.push_back(
                        measureLatency(Mover::glimmerfold, gesture, rate, false));
                    results.latencyRuns.push_back(
                        measureLatency(Mover::openbox, gesture, rate, false));
                }
            }
        });
    }
    if (plan_.withGestureStart) {
        runPart("gesture start", [&] { CrowdBench(stage_, plan_).measureGestureStarts(results); });
    }
    if (plan_.withAutoRaise) {
        runPart("auto raise", [&] { measureWithAutoRaise(results); });
    }
    for (const LatencyRun& run : results.latencyRuns) {
        if (!run.problem.empty()) {
            results.problems.push_back(std::string(run.mover) + " " + run.gesture + " at " +
                                       std::to_string(run.rateHz) + " Hz: " + run.problem);
        }
    }
    return results;
}

void Bench::runPart(const std::string& name, const std::function<void()>& part) {
    std::cerr << "glimmerfold_bench: " << name << "..." << std::flush;
    const auto started = Clock::now();
    part();
    std::cerr << " " << std::chrono::duration<double>(Clock::now() - started).count() << " s\n";
}

void Bench::measureWithAutoRaise(BenchResults& results) {
    quitGlimmerfold();
    launchGlimmerfold(true, results);
    if (!glimmerfold_) {
        return;
    }
    std::this_thread::sleep_for(plan_.settleAfterLaunch);
    if (plan_.withIdle) {
        results.idleRuns.push_back(measureIdle(0, true));
    }
    for (int rate : plan_.ratesHz) {
        if (rate < 500) {
            continue;
        }
        if (plan_.withIdle) {
            results.idleRuns.push_back(measureIdle(rate, true));
        }
        if (plan_.withLatency) {
            results.latencyRuns.push_back(
                measureLatency(Mover::glimmerfold, Gesture::move, rate, true));
        }
    }
    results.autoRaiseDelays.push_back(CrowdBench(stage_, plan_).measureAutoRaiseDelay());
    if (!results.autoRaiseDelays.back().problem.empty()) {
        results.problems.push_back("auto raise: " + results.autoRaiseDelays.back().problem);
    }
}

void Bench::launchGlimmerfold(bool autoRaise, BenchResults& results) {
    test::TrayHost& tray = stage_.desktop().trayHost();
    // The previous instance's icon must be gone, or it would be taken for the new one's.
    test::waitUntil([&] { return !tray.findIcon(); }, 5s);
    std::ostringstream delay;
    delay << plan_.autoRaiseDelaySeconds;
    // Snapping would move the window off the pointer's path near other edges, and the latency
    // is measured by finding that path's positions.
    launcher_.writeSettings(test::GlimmerfoldLauncher::settingsWith(
        {"magneticsEnabled=false",
         std::string("autoRaiseEnabled=") + (autoRaise ? "true" : "false"),
         "autoRaiseDelay=" + delay.str()}));
    // From just before exec to the tray icon being mapped.
    const auto started = Clock::now();
    auto process = launcher_.launch("glimmerfold.log");
    const bool shown =
        process &&
        test::waitUntil([&] { return !process->isRunning() || tray.findIcon().has_value(); },
                        kLaunchTimeout, 2ms);
    const std::chrono::duration<double, std::milli> startup = Clock::now() - started;
    if (!shown || !process->isRunning()) {
        results.problems.push_back("Glimmerfold showed no tray icon:\n" + launcher_.error() +
                                   launcher_.output("glimmerfold.log"));
        return;
    }
    glimmerfold_ = std::move(process);
    results.startupMs.push_back(startup.count());
}

void Bench::quitGlimmerfold() {
    if (glimmerfold_) {
        glimmerfold_->terminate(5s);
        glimmerfold_.reset();
    }
}

void Bench::measureStartups(BenchResults& results) {
    for (std::size_t launch = 0; launch < plan_.startupLaunches; ++launch) {
        quitGlimmerfold();
        launchGlimmerfold(false, results);
        if (!glimmerfold_) {
            return;
        }
    }
}

IdleRun Bench::measureIdle(int rateHz, bool autoRaise) {
    IdleRun run;
    run.rateHz = rateHz;
    run.autoRaise = autoRaise;
    stage_.placeHome();
    const std::optional<Rect> frame = stage_.desktop().probe().frameGeometry(stage_.client());
    const int startX = frame ? static_cast<int>(frame->x) : BenchStage::kHomeX;
    const int startY = frame ? static_cast<int>(frame->y + frame->height / 4) : BenchStage::kHomeY;
    stage_.hands().sendPointerTo(startX, startY);
    stage_.hands().sync();
    // Longer than the auto raise delay: the raise that this move may cause
    // happens before the counting starts.
    std::this_thread::sleep_for(500ms);

    const ProcessSample before = sampleProcess(glimmerfold_->pid());
    const auto started = Clock::now();
    const auto duration = std::chrono::duration<double>(plan_.idleSeconds);
    if (rateHz == 0) {
        std::this_thread::sleep_for(duration);
    } else {
        const auto count = static_cast<std::size_t>(plan_.idleSeconds * rateHz);
        const std::chrono::duration<double> period(1.0 / rateHz);
        for (std::size_t i = 0; i < count; ++i) {
            std::this_thread::sleep_until(started + std::chrono::duration_cast<Clock::duration>(
                                                        period * static_cast<double>(i)));
            const PixelOffset offset = path_.at(i);
            stage_.hands().sendPointerTo(startX + offset.dx, startY + offset.dy);
        }
        stage_.hands().sync();
    }
    const ProcessSample after = sampleProcess(glimmerfold_->pid());
    run.seconds = std::chrono::duration<double>(Clock::now() - started).count();
    run.glimmerfold = usageBetween(before, after, run.seconds);
    return run;
}

void Bench::measureMemory(BenchResults& results) {
    MemoryResult& memory = results.memory;
    stage_.placeHome();
    auto [x, y] = stage_.grabPoint(Gesture::move);
    const std::size_t warmUp = plan_.gestures / 10;
    for (std::size_t gesture = 0; gesture < plan_.gestures; ++gesture) {
        if (gesture == warmUp) {
            memory.afterWarmUpKiB =
                static_cast<double>(sampleProcess(glimmerfold_->pid()).residentKiB);
        }
        // Back and forth, so that the window stays where it started.
        const int direction = gesture % 2 == 0 ? 1 : -1;
        stage_.hands().sendPointerTo(x, y);
        stage_.hands().sync();
        const FrameReport before = stage_.watcher().latest();
        stage_.pressFor(Mover::glimmerfold, Gesture::move);
        bool followed = false;
        int nudge = 0;
        while (!followed && nudge < kMaxNudges) {
            ++nudge;
            stage_.hands().sendPointerTo(x + direction * nudge, y);
            followed = stage_.watcher().waitForLatest(
                [&](const FrameReport& now) { return now.x != before.x; }, kNudgeWait);
        }
        stage_.letGo(Mover::glimmerfold, Gesture::move, kStillAfterQuickGesture);
        x += direction * nudge;
        ++memory.gesturesTried;
        memory.gesturesTaken += followed ? 1 : 0;
    }
    // Whatever a gesture leaves behind is released once it has ended.
    stage_.watcher().waitUntilStill(kStill, kCatchUpTimeout);
    std::this_thread::sleep_for(200ms);
    memory.afterGesturesKiB = static_cast<double>(sampleProcess(glimmerfold_->pid()).residentKiB);
}

LatencyRun Bench::measureLatency(Mover mover, Gesture gesture, int rateHz, bool autoRaise) {
    LatencyRun run;
    run.mover = moverName(mover);
    run.gesture = gesture == Gesture::move ? "move" : "resize";
    run.rateHz = rateHz;
    run.autoRaise = autoRaise;
    if (!stage_.placeHome()) {
        run.problem = "the window could not be put back in its place";
        return run;
    }
    const std::optional<Hold> hold = stage_.takeHold(mover, gesture);
    if (!hold) {
        run.problem = "the window did not follow the pointer";
        return run;
    }
    stage_.watcher().takeReports();

    const auto count = static_cast<std::size_t>(plan_.latencySeconds * rateHz);
    const std::vector<std::chrono::nanoseconds> schedule =
        motionSchedule(rateHz, count, static_cast<std::uint32_t>(rateHz));
    std::vector<TimedKey> motions;
    motions.reserve(count);
    const std::array<pid_t, 3> pids{glimmerfold_->pid(), stage_.desktop().windowManagerPid(),
                                    stage_.desktop().serverPid()};
    std::array<ProcessSample, 3> before;
    for (std::size_t i = 0; i < pids.size(); ++i) {
        before[i] = sampleProcess(pids[i]);
    }
    const auto started = Clock::now();
    for (std::size_t i = 0; i < count; ++i) {
        std::this_thread::sleep_until(started + schedule[i]);
        const PixelOffset offset = path_.at(i);
        const int x = hold->pointerX + offset.dx;
        const int y = hold->pointerY + offset.dy;
        motions.push_back({Clock::now(), pairKey(x + hold->offsetA, y + hold->offsetB)});
        stage_.hands().sendPointerTo(x, y);
    }
    const std::int64_t lastKey = motions.back().key;
    const bool caughtUp = stage_.watcher().waitForLatest(
        [&](const FrameReport& now) { return stage_.frameKey(gesture, now) == lastKey; },
        kCatchUpTimeout);
    const auto finished = caughtUp ? stage_.watcher().latest().time : Clock::now();
    std::array<ProcessSample, 3> after;
    for (std::size_t i = 0; i < pids.size(); ++i) {
        after[i] = sampleProcess(pids[i]);
    }
    stage_.letGo(mover, gesture, kStill);

    run.motions = count;
    run.seconds = std::chrono::duration<double>(finished - started).count();
    run.costs.glimmerfold = usageBetween(before[0], after[0], run.seconds);
    run.costs.windowManager = usageBetween(before[1], after[1], run.seconds);
    run.costs.server = usageBetween(before[2], after[2], run.seconds);
    std::vector<TimedKey> reports;
    for (const FrameReport& report : stage_.watcher().takeReports()) {
        reports.push_back({report.time, stage_.frameKey(gesture, report)});
    }
    const LatencyMatch match = matchMotionsToReports(motions, reports);
    run.latency = distributionOf(match.latenciesMs);
    if (plan_.keepRawLatencies) {
        run.latenciesMs = match.latenciesMs;
    }
    run.shownExactly = match.shownExactly;
    run.neverShown = match.neverShown;
    run.strayReports = match.strayReports;
    if (!caughtUp) {
        run.problem = "the window never reached the last pointer position";
    }
    return run;
}

}  // namespace gf::bench
