#include "CrowdBench.h"

#include <xcb/xcb.h>

#include <thread>

#include "StackingWatcher.h"
#include "platform/x11/XcbReply.h"
#include "x11/WaitUntil.h"

namespace gf::bench {

namespace {

using namespace std::chrono_literals;
using test::Keysym::controlL;
using test::Keysym::superL;

constexpr auto kStill = 40ms;
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

}  // namespace

CrowdBench::CrowdBench(BenchStage& stage, const BenchPlan& plan) : stage_(stage), plan_(plan) {}

void CrowdBench::measureGestureStarts(BenchResults& results) {
    std::string error;
    const std::unique_ptr<WindowCrowd> crowd =
        WindowCrowd::open(stage_.desktop().displayName(), &error);
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

GestureStartRun CrowdBench::measureGestureStartAmong(WindowCrowd& crowd, std::size_t windows) {
    GestureStartRun run;
    run.windows = windows;
    // The window moved is one of those open.
    if (windows < 2 || !crowd.growTo(windows - 1, stage_.homeClearance())) {
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

std::optional<GestureStartTiming> CrowdBench::timeGestureStart(const WindowCrowd& crowd,
                                                               std::string* problem) {
    if (!stage_.placeHome() || !lowerBelow(crowd)) {
        *problem = "the window could not be put back in its place under the others";
        return std::nullopt;
    }
    const auto [x, y] = stage_.grabPoint(Gesture::move);
    stage_.hands().sendPointerTo(x, y);
    stage_.hands().sync();
    stage_.watcher().waitUntilStill(kStill, kCatchUpTimeout);
    const FrameReport before = stage_.watcher().latest();
    stage_.hands().pressKey(controlL);
    std::this_thread::sleep_for(kBetweenKeys);
    stage_.watcher().takeReports();

    const MotionPath path(kProbeSweep);
    std::vector<Clock::time_point> sent;
    sent.reserve(kMaxProbeMotions);
    std::optional<std::size_t> movedAt;
    const auto keys = Clock::now();
    if (!stage_.hands().sendKeyPress(superL)) {
        *problem = "no key of the keyboard is Super";
        stage_.hands().releaseKey(controlL);
        return std::nullopt;
    }
    for (std::size_t i = 0; i < kMaxProbeMotions; ++i) {
        std::this_thread::sleep_until(keys + kProbeSpacing * static_cast<int>(i + 1));
        const PixelOffset offset = path.at(i);
        sent.push_back(Clock::now());
        stage_.hands().sendPointerTo(x + offset.dx, y + offset.dy);
        if (movedAt) {
            if (i >= *movedAt + kProbeMotionsAfterMove) {
                break;
            }
        } else if (const FrameReport now = stage_.watcher().latest();
                   now.x != before.x || now.y != before.y) {
            movedAt = i;
        }
    }
    stage_.watcher().waitUntilStill(kStill, kCatchUpTimeout);
    const std::vector<FrameReport> reports = stage_.watcher().takeReports();
    stage_.letGo(Mover::glimmerfold, Gesture::move, kStill);
    return gf::bench::timeGestureStart(keys, sent, path, before, reports, problem);
}

bool CrowdBench::lowerBelow(const WindowCrowd& crowd) {
    const test::DesktopProbe& probe = stage_.desktop().probe();
    if (crowd.size() == 0 || !probe.isAbove(stage_.client(), crowd.first())) {
        return true;
    }
    // A request of the window's own, which the window manager carries out.
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_configure_window(stage_.desktop().connection(), stage_.client(),
                         XCB_CONFIG_WINDOW_STACK_MODE, &below);
    xcb_flush(stage_.desktop().connection());
    return test::waitUntil([&] { return !probe.isAbove(stage_.client(), crowd.first()); }, 2s);
}

AutoRaiseDelayRun CrowdBench::measureAutoRaiseDelay() {
    AutoRaiseDelayRun run;
    run.delayMs = plan_.autoRaiseDelaySeconds * 1000.0;
    std::string error;
    const std::unique_ptr<WindowCrowd> neighbours =
        WindowCrowd::open(stage_.desktop().displayName(), &error);
    const std::unique_ptr<StackingWatcher> stacking =
        neighbours ? StackingWatcher::open(stage_.desktop().displayName(), &error) : nullptr;
    if (!stacking) {
        run.problem = error;
        return run;
    }
    const std::optional<Rect> home =
        stage_.placeHome() ? stage_.desktop().probe().frameGeometry(stage_.client()) : std::nullopt;
    const std::optional<test::WindowId> other =
        home ? neighbours->add(static_cast<int>(home->maxX()) + kNeighbourGap, BenchStage::kHomeY,
                               BenchStage::kClientWidth, BenchStage::kClientHeight)
             : std::nullopt;
    if (!other) {
        run.problem = "the second window did not come up beside the first";
        return run;
    }
    // The pointer comes onto the first window from the bare desktop, and that
    // window comes to the front (the second opened above it); not counted.
    const std::optional<test::WindowId> otherFrame = stage_.desktop().probe().frameOf(*other);
    stage_.hands().sendPointerTo(kBareDesktopX, kBareDesktopY);
    stage_.hands().sync();
    std::this_thread::sleep_for(kRestAfterRaise);
    const bool behind = stacking->expectAbove(stage_.frame(), otherFrame.value_or(XCB_WINDOW_NONE));
    stage_.hands().sendPointerTo(static_cast<int>(home->midX()), static_cast<int>(home->midY()));
    if (behind && !stacking->waitForAbove(kRaiseTimeout)) {
        run.problem = "the window under the pointer was not raised";
        return run;
    }
    std::this_thread::sleep_for(kRestAfterRaise);
    std::vector<double> late;
    std::string problem;
    for (std::size_t crossing = 0; crossing < plan_.autoRaiseCrossings; ++crossing) {
        const bool outward = crossing % 2 == 0;
        const std::optional<double> ms =
            timeAutoRaise(*stacking, outward ? stage_.client() : *other,
                          outward ? *other : stage_.client(), &problem);
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

std::optional<double> CrowdBench::timeAutoRaise(StackingWatcher& stacking, test::WindowId from,
                                                test::WindowId to, std::string* problem) {
    const test::DesktopProbe& probe = stage_.desktop().probe();
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
    xcb_connection_t* c = stage_.desktop().connection();
    const auto pointer =
        xcbReply(c, xcb_query_pointer_reply, xcb_query_pointer(c, stage_.desktop().root()));
    if (!pointer || !toRect->contains({static_cast<double>(pointer->root_x),
                                       static_cast<double>(pointer->root_y)})) {
        *problem = "the pointer did not land on the other window";
        return std::nullopt;
    }
    std::this_thread::sleep_for(kRestAfterRaise);
    return std::chrono::duration<double, std::milli>(*raised - last).count();
}

// From the middle of one window to the middle of the other, level with it.
Clock::time_point CrowdBench::crossOnto(const Rect& from, const Rect& to) {
    const int step = to.midX() > from.midX() ? kCrossingStep : -kCrossingStep;
    int x = static_cast<int>(from.midX());
    const auto staysInside = [&](int next) {
        return next >= from.minX() + kCrossingEdgeMargin &&
               next < from.maxX() - kCrossingEdgeMargin;
    };
    for (; staysInside(x + step); x += step) {
        stage_.hands().sendPointerBy(step, 0);
        std::this_thread::sleep_for(kCrossingStepInterval);
    }
    const Clock::time_point last = Clock::now();
    stage_.hands().sendPointerBy(static_cast<int>(to.midX()) - x, 0);
    return last;
}

}  // namespace gf::bench
