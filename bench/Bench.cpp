#include "Bench.h"

#include <array>
#include <chrono>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "MotionSchedule.h"
#include "PollUntil.h"
#include "TrayIconFinder.h"

namespace gf::bench {

namespace {

using namespace std::chrono_literals;
using test::Keysym::altL;
using test::Keysym::controlL;
using test::Keysym::superL;

constexpr int kHomeX = 300;
constexpr int kHomeY = 250;
constexpr int kClientWidth = 200;
constexpr int kClientHeight = 150;
constexpr int kLeftButton = 1;
constexpr int kRightButton = 3;
constexpr int kMaxNudges = 40;
constexpr auto kNudgeWait = 10ms;
constexpr auto kStill = 40ms;
// Longer than a tick: once the frame has not changed for this long after the
// keys are let go, the gesture's last write has landed.
constexpr auto kStillAfterQuickGesture = 15ms;
constexpr auto kCatchUpTimeout = 1s;

const char* moverName(bool glimmerfold) {
    return glimmerfold ? "Glimmerfold" : "openbox";
}

}  // namespace

BenchPlan BenchPlan::smokeTest() {
    BenchPlan plan;
    plan.smoke = true;
    plan.ratesHz = {250};
    plan.latencySeconds = 0.4;
    plan.idleSeconds = 0.3;
    plan.startupLaunches = 1;
    plan.gestures = 20;
    plan.withAutoRaise = false;
    plan.withResize = false;
    return plan;
}

Bench::Bench(BenchDesktop& desktop, std::filesystem::path glimmerfold, BenchPlan plan)
    : desktop_(desktop), executable_(std::move(glimmerfold)), plan_(std::move(plan)) {
    std::string error;
    hands_ = Hands::open(desktop_.displayName(), &error);
    if (!hands_) {
        throw std::runtime_error(error);
    }
    window_ = desktop_.startXlogo(kHomeX, kHomeY, kClientWidth, kClientHeight);
    watcher_ = FrameWatcher::open(desktop_.displayName(), window_.frame, &error);
    if (!watcher_) {
        throw std::runtime_error(error);
    }
}

Bench::~Bench() {
    if (glimmerfold_) {
        glimmerfold_->quit();
    }
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
    glimmerfold_->quit();
    glimmerfold_.reset();
    launchGlimmerfold(true, results);
    if (!glimmerfold_) {
        return;
    }
    std::this_thread::sleep_for(1s);
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
}

void Bench::launchGlimmerfold(bool autoRaise, BenchResults& results) {
    // The previous instance's icon must be gone, or it would be taken for the new one's.
    pollUntil(
        [&] {
            return !findViewableWindowOfClass(desktop_.connection(), desktop_.trayHostFrame(),
                                              "Glimmerfold");
        },
        5s, 5ms);
    std::string error;
    glimmerfold_ = GlimmerfoldProcess::launch(desktop_, executable_, {autoRaise}, &error);
    if (!glimmerfold_) {
        results.problems.push_back(error);
        return;
    }
    results.startupMs.push_back(glimmerfold_->startupMs());
}

void Bench::measureStartups(BenchResults& results) {
    for (std::size_t launch = 0; launch < plan_.startupLaunches; ++launch) {
        if (glimmerfold_) {
            glimmerfold_->quit();
            glimmerfold_.reset();
        }
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
    placeHome();
    const std::optional<Rect> frame = desktop_.probe().frameGeometry(window_.client);
    const int startX = frame ? static_cast<int>(frame->x) : kHomeX;
    const int startY = frame ? static_cast<int>(frame->y + frame->height / 4) : kHomeY;
    hands_->moveTo(startX, startY);
    hands_->sync();
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
            hands_->moveTo(startX + offset.dx, startY + offset.dy);
        }
        hands_->sync();
    }
    const ProcessSample after = sampleProcess(glimmerfold_->pid());
    run.seconds = std::chrono::duration<double>(Clock::now() - started).count();
    run.glimmerfold = usageBetween(before, after, run.seconds);
    return run;
}

void Bench::measureMemory(BenchResults& results) {
    MemoryResult& memory = results.memory;
    placeHome();
    auto [x, y] = grabPoint(Gesture::move);
    const std::size_t warmUp = plan_.gestures / 10;
    for (std::size_t gesture = 0; gesture < plan_.gestures; ++gesture) {
        if (gesture == warmUp) {
            memory.afterWarmUpKiB =
                static_cast<double>(sampleProcess(glimmerfold_->pid()).residentKiB);
        }
        // Back and forth, so that the window stays where it started.
        const int direction = gesture % 2 == 0 ? 1 : -1;
        hands_->moveTo(x, y);
        hands_->sync();
        const FrameReport before = watcher_->latest();
        pressFor(Mover::glimmerfold, Gesture::move);
        bool followed = false;
        int nudge = 0;
        while (!followed && nudge < kMaxNudges) {
            ++nudge;
            hands_->moveTo(x + direction * nudge, y);
            followed = watcher_->waitForLatest(
                [&](const FrameReport& now) { return now.x != before.x; }, kNudgeWait);
        }
        letGo(Mover::glimmerfold, Gesture::move, kStillAfterQuickGesture);
        x += direction * nudge;
        ++memory.gesturesTried;
        memory.gesturesTaken += followed ? 1 : 0;
    }
    // Whatever a gesture leaves behind is released once it has ended.
    watcher_->waitUntilStill(kStill, kCatchUpTimeout);
    std::this_thread::sleep_for(200ms);
    memory.afterGesturesKiB = static_cast<double>(sampleProcess(glimmerfold_->pid()).residentKiB);
}

LatencyRun Bench::measureLatency(Mover mover, Gesture gesture, int rateHz, bool autoRaise) {
    LatencyRun run;
    run.mover = moverName(mover == Mover::glimmerfold);
    run.gesture = gesture == Gesture::move ? "move" : "resize";
    run.rateHz = rateHz;
    run.autoRaise = autoRaise;
    if (!placeHome()) {
        run.problem = "the window could not be put back in its place";
        return run;
    }
    const std::optional<Hold> hold = takeHold(mover, gesture);
    if (!hold) {
        run.problem = "the window did not follow the pointer";
        return run;
    }
    watcher_->takeReports();

    const auto count = static_cast<std::size_t>(plan_.latencySeconds * rateHz);
    const std::vector<std::chrono::nanoseconds> schedule =
        motionSchedule(rateHz, count, static_cast<std::uint32_t>(rateHz));
    std::vector<TimedKey> motions;
    motions.reserve(count);
    const std::array<pid_t, 3> pids{glimmerfold_->pid(), desktop_.windowManagerPid(),
                                    desktop_.serverPid()};
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
        hands_->moveTo(x, y);
    }
    const std::int64_t lastKey = motions.back().key;
    const bool caughtUp = watcher_->waitForLatest(
        [&](const FrameReport& now) { return frameKey(gesture, now) == lastKey; }, kCatchUpTimeout);
    const auto finished = caughtUp ? watcher_->latest().time : Clock::now();
    std::array<ProcessSample, 3> after;
    for (std::size_t i = 0; i < pids.size(); ++i) {
        after[i] = sampleProcess(pids[i]);
    }
    letGo(mover, gesture, kStill);

    run.motions = count;
    run.seconds = std::chrono::duration<double>(finished - started).count();
    run.costs.glimmerfold = usageBetween(before[0], after[0], run.seconds);
    run.costs.windowManager = usageBetween(before[1], after[1], run.seconds);
    run.costs.server = usageBetween(before[2], after[2], run.seconds);
    std::vector<TimedKey> reports;
    for (const FrameReport& report : watcher_->takeReports()) {
        reports.push_back({report.time, frameKey(gesture, report)});
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

std::optional<Bench::Hold> Bench::takeHold(Mover mover, Gesture gesture) {
    const auto [x, y] = grabPoint(gesture);
    hands_->moveTo(x, y);
    hands_->sync();
    watcher_->waitUntilStill(kStill, kCatchUpTimeout);
    const std::int64_t before = frameKey(gesture, watcher_->latest());
    pressFor(mover, gesture);
    // The gesture takes hold a moment after the input arrives: nudge the
    // pointer until the window follows.
    bool followed = false;
    int nudge = 0;
    while (!followed && nudge < kMaxNudges) {
        ++nudge;
        hands_->moveTo(x + nudge, y);
        followed = watcher_->waitForLatest(
            [&](const FrameReport& now) { return frameKey(gesture, now) != before; }, kNudgeWait);
    }
    if (!followed) {
        letGo(mover, gesture, kStill);
        return std::nullopt;
    }
    watcher_->waitUntilStill(kStill, kCatchUpTimeout);
    const FrameReport held = watcher_->latest();
    const int pointerX = x + nudge;
    const int a = gesture == Gesture::move ? held.x : held.width;
    const int b = gesture == Gesture::move ? held.y : held.height;
    return Hold{pointerX, y, a - pointerX, b - y};
}

void Bench::pressFor(Mover mover, Gesture gesture) {
    if (mover == Mover::glimmerfold) {
        hands_->pressKey(controlL);
        hands_->pressKey(gesture == Gesture::move ? superL : altL);
    } else {
        hands_->pressKey(altL);
        hands_->pressButton(gesture == Gesture::move ? kLeftButton : kRightButton);
    }
}

void Bench::letGo(Mover mover, Gesture gesture, std::chrono::milliseconds still) {
    if (mover == Mover::glimmerfold) {
        hands_->releaseKey(gesture == Gesture::move ? superL : altL);
        hands_->releaseKey(controlL);
    } else {
        hands_->releaseButton(gesture == Gesture::move ? kLeftButton : kRightButton);
        hands_->releaseKey(altL);
    }
    watcher_->waitUntilStill(still, kCatchUpTimeout);
}

bool Bench::placeHome() {
    return desktop_.placeWindow(window_, kHomeX, kHomeY, kClientWidth, kClientHeight);
}

std::pair<int, int> Bench::grabPoint(Gesture gesture) const {
    const Rect frame = desktop_.probe().frameGeometry(window_.client).value_or(Rect{});
    // A resize takes hold near the bottom-right corner, which both movers
    // then drag; a move takes hold in the middle.
    const double share = gesture == Gesture::move ? 0.5 : 0.9;
    return {static_cast<int>(frame.x + frame.width * share),
            static_cast<int>(frame.y + frame.height * share)};
}

std::int64_t Bench::frameKey(Gesture gesture, const FrameReport& report) {
    return gesture == Gesture::move ? pairKey(report.x, report.y)
                                    : pairKey(report.width, report.height);
}

}  // namespace gf::bench
