#include "BenchStage.h"

#include <stdexcept>

#include "MotionPath.h"

namespace gf::bench {

namespace {

using namespace std::chrono_literals;
using test::Keysym::altL;
using test::Keysym::controlL;
using test::Keysym::superL;

constexpr int kLeftButton = 1;
constexpr int kRightButton = 3;
constexpr int kMaxNudges = 40;
constexpr auto kNudgeWait = 10ms;
constexpr auto kStill = 40ms;
constexpr auto kCatchUpTimeout = 1s;
// Around the window's place: room for the gesture start's probe path, kept clear of the crowd.
constexpr int kClearance = 60;

}  // namespace

const char* moverName(Mover mover) {
    return mover == Mover::glimmerfold ? "Glimmerfold" : "openbox";
}

test::X11Desktop::Options BenchStage::desktopOptions() {
    test::X11Desktop::Options options;
    options.openboxDragBindings = true;
    options.sessionBus = false;
    options.trayHost = true;
    return options;
}

BenchStage::BenchStage(test::X11Desktop& desktop) : desktop_(desktop) {
    std::string error;
    hands_ = test::XTestDriver::connect(desktop_.displayName(), &error);
    if (!hands_) {
        throw std::runtime_error(error);
    }
    client_ = desktop_.startXlogo(kHomeX, kHomeY, kClientWidth, kClientHeight).window;
    frame_ = desktop_.probe().frameOf(client_).value_or(0);
    watcher_ = FrameWatcher::open(desktop_.displayName(), frame_, &error);
    if (!watcher_) {
        throw std::runtime_error(error);
    }
}

std::optional<Hold> BenchStage::takeHold(Mover mover, Gesture gesture) {
    const auto [x, y] = grabPoint(gesture);
    hands_->sendPointerTo(x, y);
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
        hands_->sendPointerTo(x + nudge, y);
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

void BenchStage::pressFor(Mover mover, Gesture gesture) {
    if (mover == Mover::glimmerfold) {
        hands_->pressKey(controlL);
        hands_->pressKey(gesture == Gesture::move ? superL : altL);
    } else {
        hands_->pressKey(altL);
        hands_->pressButton(gesture == Gesture::move ? kLeftButton : kRightButton);
    }
}

void BenchStage::letGo(Mover mover, Gesture gesture, std::chrono::milliseconds still) {
    if (mover == Mover::glimmerfold) {
        hands_->releaseKey(gesture == Gesture::move ? superL : altL);
        hands_->releaseKey(controlL);
    } else {
        hands_->releaseButton(gesture == Gesture::move ? kLeftButton : kRightButton);
        hands_->releaseKey(altL);
    }
    watcher_->waitUntilStill(still, kCatchUpTimeout);
}

bool BenchStage::placeHome() {
    return desktop_.placeWindow(client_, kHomeX, kHomeY, kClientWidth, kClientHeight);
}

Rect BenchStage::homeClearance() const {
    const Rect frame = desktop_.probe().frameGeometry(client_).value_or(Rect{});
    return {kHomeX - kClearance, kHomeY - kClearance, frame.width + 2 * kClearance,
            frame.height + 2 * kClearance};
}

std::pair<int, int> BenchStage::grabPoint(Gesture gesture) const {
    const Rect frame = desktop_.probe().frameGeometry(client_).value_or(Rect{});
    // A resize takes hold near the bottom-right corner, which both movers
    // then drag; a move takes hold in the middle.
    const double share = gesture == Gesture::move ? 0.5 : 0.9;
    return {static_cast<int>(frame.x + frame.width * share),
            static_cast<int>(frame.y + frame.height * share)};
}

std::int64_t BenchStage::frameKey(Gesture gesture, const FrameReport& report) {
    return gesture == Gesture::move ? pairKey(report.x, report.y)
                                    : pairKey(report.width, report.height);
}

}  // namespace gf::bench
