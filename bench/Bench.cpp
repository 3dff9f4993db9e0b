#include "Bench.h"

#include <array>
#include <chrono>
#include <iostream>
#include <stdexcept>
#include <thread>

#include <xcb/xcb.h>

#include "MotionSchedule.h"
#include "PollUntil.h"
#include "StackingWatcher.h"
#include "TrayIconFinder.h"
#include "WindowCrowd.h"
#include "platform/x11/XcbReply.h"
#include "x11/WaitUntil.h"

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

// Gesture start. Control alone begins nothing; the time runs from the second
// key, and the first is given long enough to have been seen.
constexpr auto kBetweenKeys = 20ms;
// Probe motions after the keys, close enough together to time a pointer read
// to a quarter of a millisecond, along a path that stays inside the window.
constexpr auto kProbeSpacing = 250us;
constexpr std::size_t kMaxProbeMotions = 4000;
constexpr std::size_t kProbeMotionsAfterMove = 8;
constexpr int kProbeSweep = 40;
// Around the window's place: room for the probe's path, kept clear of the crowd.
constexpr int kClearance = 60;

// Auto raise: the second window stands this far to the right of the first.
constexpr int kNeighbourGap = 60;
// A crossing moves like a hand: small steps a millisecond apart inside the
// window it leaves, then one flick across the gap onto the other.
constexpr int kCrossingStep = 8;
constexpr auto kCrossingStepInterval = 1ms;
constexpr int kCrossingEdgeMargin = 12;
// How long the pointer stays on the raised window before it leaves again.
constexpr auto kRestAfterRaise = 40ms;
constexpr auto kRaiseTimeout = 3s;
// Where no window is.
constexpr int kBareDesktopX = 5;
constexpr int kBareDesktopY = 795;

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
    plan.sceneSizes = {10};
    plan.gestureStartTrials = 3;
    plan.autoRaiseCrossings = 2;
    plan.settleAfterLaunch = 200ms;
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
    if (plan_.withGestureStart) {
        runPart("gesture start", [&] { measureGestureStarts(results); });
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
    results.autoRaiseDelays.push_back(measureAutoRaiseDelay());
    if (!results.autoRaiseDelays.back().problem.empty()) {
        results.problems.push_back("auto raise: " + results.autoRaiseDelays.back().problem);
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
    glimmerfold_ = GlimmerfoldProcess::launch(desktop_, executable_,
                                              {autoRaise, plan_.autoRaiseDelaySeconds}, &error);
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

void Bench::measureGestureStarts(BenchResults& results) {
    std::string error;
    const std::unique_ptr<WindowCrowd> crowd = WindowCrowd::open(desktop_.displayName(), &error);
    if (!crowd) {
        results.problems.push_back(error);
        return;
    }
    for (std::size_t windows : plan_.sceneSizes) {
        results.gestureStarts.push_back(measureGestureStartAmong(*crowd, windows));
        if (!results.gestureStarts.back().problem.empty()) {
            results.problems.push_back("gesture start with " + std::to_string(windows) +
                                       " windows: " + results.gestureStarts.back().problem);
        }
    }
}

GestureStartRun Bench::measureGestureStartAmong(WindowCrowd& crowd, std::size_t windows) {
    GestureStartRun run;
    run.windows = windows;
    // The window moved is one of those open.
    if (windows < 2 || !crowd.growTo(windows - 1, homeClearance())) {
        run.problem = "the other windows did not all come up";
        return run;
    }
    std::vector<double> pointerRead;
    std::vector<double> following;
    std::vector<double> frameMoved;
    for (std::size_t trial = 0; trial < plan_.gestureStartTrials; ++trial) {
        const std::optional<GestureStartTiming> timing = timeGestureStart(crowd, &run.problem);
        if (!timing) {
            break;
        }
        pointerRead.push_back(timing->pointerReadMs);
        following.push_back(timing->followingMs);
        frameMoved.push_back(timing->frameMovedMs);
    }
    run.trials = following.size();
    run.pointerReadMs = distributionOf(pointerRead);
    run.followingMs = distributionOf(following);
    run.frameMovedMs = distributionOf(frameMoved);
    return run;
}

std::optional<GestureStartTiming> Bench::timeGestureStart(const WindowCrowd& crowd,
                                                          std::string* problem) {
    if (!placeHome() || !lowerBelow(crowd)) {
        *problem = "the window could not be put back in its place under the others";
        return std::nullopt;
    }
    const auto [x, y] = grabPoint(Gesture::move);
    hands_->moveTo(x, y);
    hands_->sync();
    watcher_->waitUntilStill(kStill, kCatchUpTimeout);
    const FrameReport before = watcher_->latest();
    hands_->pressKey(controlL);
    std::this_thread::sleep_for(kBetweenKeys);
    watcher_->takeReports();

    const MotionPath path(kProbeSweep);
    std::vector<Clock::time_point> sent;
    sent.reserve(kMaxProbeMotions);
    std::optional<std::size_t> movedAt;
    const auto keys = Clock::now();
    if (!hands_->sendKeyPress(superL)) {
        *problem = "no key of the keyboard is Super";
        hands_->releaseKey(controlL);
        return std::nullopt;
    }
    for (std::size_t i = 0; i < kMaxProbeMotions; ++i) {
        std::this_thread::sleep_until(keys + kProbeSpacing * static_cast<int>(i + 1));
        const PixelOffset offset = path.at(i);
        sent.push_back(Clock::now());
        hands_->moveTo(x + offset.dx, y + offset.dy);
        if (movedAt) {
            if (i >= *movedAt + kProbeMotionsAfterMove) {
                break;
            }
        } else if (const FrameReport now = watcher_->latest();
                   now.x != before.x || now.y != before.y) {
            movedAt = i;
        }
    }
    watcher_->waitUntilStill(kStill, kCatchUpTimeout);
    const std::vector<FrameReport> reports = watcher_->takeReports();
    letGo(Mover::glimmerfold, Gesture::move, kStill);
    return gf::bench::timeGestureStart(keys, sent, path, before, reports, problem);
}

bool Bench::lowerBelow(const WindowCrowd& crowd) {
    const test::DesktopProbe& probe = desktop_.probe();
    if (crowd.size() == 0 || !probe.isAbove(window_.client, crowd.first())) {
        return true;
    }
    // A request of the window's own, which the window manager carries out.
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_configure_window(desktop_.connection(), window_.client, XCB_CONFIG_WINDOW_STACK_MODE,
                         &below);
    xcb_flush(desktop_.connection());
    return test::waitUntil([&] { return !probe.isAbove(window_.client, crowd.first()); }, 2s);
}

AutoRaiseDelayRun Bench::measureAutoRaiseDelay() {
    AutoRaiseDelayRun run;
    run.delayMs = plan_.autoRaiseDelaySeconds * 1000.0;
    std::string error;
    const std::unique_ptr<WindowCrowd> neighbours =
        WindowCrowd::open(desktop_.displayName(), &error);
    const std::unique_ptr<StackingWatcher> stacking =
        neighbours ? StackingWatcher::open(desktop_.displayName(), &error) : nullptr;
    if (!stacking) {
        run.problem = error;
        return run;
    }
    const std::optional<Rect> home =
        placeHome() ? desktop_.probe().frameGeometry(window_.client) : std::nullopt;
    const std::optional<test::WindowId> other =
        home ? neighbours->add(static_cast<int>(home->maxX()) + kNeighbourGap, kHomeY, kClientWidth,
                               kClientHeight)
             : std::nullopt;
    if (!other) {
        run.problem = "the second window did not come up beside the first";
        return run;
    }
    // The pointer comes onto the first window from the bare desktop, and that
    // window comes to the front (the second opened above it); not counted.
    const std::optional<test::WindowId> otherFrame = desktop_.probe().frameOf(*other);
    hands_->moveTo(kBareDesktopX, kBareDesktopY);
    hands_->sync();
    std::this_thread::sleep_for(kRestAfterRaise);
    const bool behind = stacking->expectAbove(window_.frame, otherFrame.value_or(XCB_WINDOW_NONE));
    hands_->moveTo(static_cast<int>(home->midX()), static_cast<int>(home->midY()));
    if (behind && !stacking->waitForAbove(kRaiseTimeout)) {
        run.problem = "the window under the pointer was not raised";
        return run;
    }
    std::this_thread::sleep_for(kRestAfterRaise);
    std::vector<double> late;
    std::string problem;
    for (std::size_t crossing = 0; crossing < plan_.autoRaiseCrossings; ++crossing) {
        const bool outward = crossing % 2 == 0;
        const std::optional<double> ms = timeAutoRaise(*stacking, outward ? window_.client : *other,
                                                       outward ? *other : window_.client, &problem);
        if (!ms) {
            run.problem = problem;
            break;
        }
        late.push_back(*ms - run.delayMs);
    }
    run.crossings = late.size();
    run.lateMs = distributionOf(late);
    return run;
}

std::optional<double> Bench::timeAutoRaise(StackingWatcher& stacking, test::WindowId from,
                                           test::WindowId to, std::string* problem) {
    const test::DesktopProbe& probe = desktop_.probe();
    const std::optional<test::WindowId> fromFrame = probe.frameOf(from);
    const std::optional<test::WindowId> toFrame = probe.frameOf(to);
    const std::optional<Rect> fromRect = probe.frameGeometry(from);
    const std::optional<Rect> toRect = probe.frameGeometry(to);
    if (!fromFrame || !toFrame || !fromRect || !toRect) {
        *problem = "a window went away";
        return std::nullopt;
    }
    if (!stacking.expectAbove(*toFrame, *fromFrame)) {
        *problem = "the window the pointer went to was in front already";
        return std::nullopt;
    }
    const Clock::time_point last = crossOnto(*fromRect, *toRect);
    const std::optional<Clock::time_point> raised = stacking.waitForAbove(kRaiseTimeout);
    if (!raised) {
        *problem = "the window the pointer rested on was not raised";
        return std::nullopt;
    }
    xcb_connection_t* c = desktop_.connection();
    const auto pointer =
        xcbReply(c, xcb_query_pointer_reply, xcb_query_pointer(c, desktop_.root()));
    if (!pointer || !toRect->contains({static_cast<double>(pointer->root_x),
                                       static_cast<double>(pointer->root_y)})) {
        *problem = "the pointer did not land on the other window";
        return std::nullopt;
    }
    std::this_thread::sleep_for(kRestAfterRaise);
    return std::chrono::duration<double, std::milli>(*raised - last).count();
}

// From the middle of one window to the middle of the other, level with it.
Clock::time_point Bench::crossOnto(const Rect& from, const Rect& to) {
    const int step = to.midX() > from.midX() ? kCrossingStep : -kCrossingStep;
    int x = static_cast<int>(from.midX());
    const auto staysInside = [&](int next) {
        return next >= from.minX() + kCrossingEdgeMargin &&
               next < from.maxX() - kCrossingEdgeMargin;
    };
    for (; staysInside(x + step); x += step) {
        hands_->moveBy(step, 0);
        std::this_thread::sleep_for(kCrossingStepInterval);
    }
    const Clock::time_point last = Clock::now();
    hands_->moveBy(static_cast<int>(to.midX()) - x, 0);
    return last;
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

Rect Bench::homeClearance() const {
    const Rect frame = desktop_.probe().frameGeometry(window_.client).value_or(Rect{});
    return {kHomeX - kClearance, kHomeY - kClearance, frame.width + 2 * kClearance,
            frame.height + 2 * kClearance};
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
