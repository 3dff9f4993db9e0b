#include "engine/DragSession.h"

#include <chrono>
#include <cmath>

#include "engine/MagneticsEngine.h"
#include "model/Settings.h"

namespace gf {

namespace {

using namespace std::chrono_literals;

constexpr auto tickPeriod = 8ms;
constexpr auto tickLeeway = 1ms;

// The bound wins unless the candidate is strictly smaller.
double atMost(double candidate, double bound) {
    return candidate < bound ? candidate : bound;
}

// fmax ignores a NaN operand, which keeps a garbage displacement from
// poisoning the frame.
double atLeast(double candidate, double bound) {
    return std::fmax(candidate, bound);
}

}  // namespace

DragSession::DragSession(Settings& settings, Platform platform)
    : settings_(settings),
      platform_(platform),
      axQueue_(platform_.queues.createSerialQueue("com.glimmerfold.ax")) {}

DragSession::~DragSession() {
    if (isDragging_ || isResizing_) {
        end();
    }
}

void DragSession::beginMove(std::shared_ptr<WindowHandle> window, std::int32_t pid, Point mouse) {
    if (!window) {
        return;
    }
    const auto position = window->position();
    if (!position) {
        return;
    }
    stopUpdateTimer();
    auto gesture = std::make_shared<Gesture>();
    gesture->isResize = false;
    gesture->initialMousePosition = mouse;
    gesture->initialWindowPosition = *position;
    gesture->cachedWindowSize = window->size().value_or(Size{});
    gesture->window = std::move(window);
    gesture->pid = pid;
    gesture->bringToFront = settings_.bringToFrontOnManipulate();
    if (settings_.magneticsEnabled()) {
        gesture->cachedSnapEdges = MagneticsEngine::collectEdges(settings_, platform_);
    }
    isDragging_ = true;
    isResizing_ = false;
    start(std::move(gesture), mouse);
}

void DragSession::beginResize(std::shared_ptr<WindowHandle> window, std::int32_t pid, Point mouse) {
    if (!window) {
        return;
    }
    const auto position = window->position();
    if (!position) {
        return;
    }
    const auto size = window->size();
    if (!size) {
        return;
    }
    // A window whose size is fixed is neither resized nor moved by this gesture.
    if (!window->isSizeSettable().value_or(false)) {
        return;
    }
    stopUpdateTimer();
    auto gesture = std::make_shared<Gesture>();
    gesture->isResize = true;
    gesture->initialMousePosition = mouse;
    gesture->initialWindowFrame = Rect::fromOriginAndSize(*position, *size);
    gesture->window = std::move(window);
    gesture->pid = pid;
    gesture->bringToFront = settings_.bringToFrontOnManipulate();
    gesture->corner = settings_.resizeFromBottomRightOnly()
                          ? ResizeCorner::bottomRight
                          : cornerFor(mouse, gesture->initialWindowFrame);
    gesture->screenBounds =
        screenFrameContaining(gesture->initialWindowFrame, platform_.displays.displays());
    corner_ = gesture->corner;
    isDragging_ = false;
    isResizing_ = true;
    start(std::move(gesture), mouse);
}

void DragSession::end() {
    stopUpdateTimer();
    std::shared_ptr<const Gesture> ended;
    {
        std::lock_guard lock(gestureMutex_);
        ended = std::move(gesture_);
        gesture_.reset();
    }
    const std::int32_t pid = ended ? ended->pid : 0;
    std::shared_ptr<WindowHandle> window = ended ? ended->window : nullptr;
    // Queued behind the last tick, so the attribute comes back only after the
    // gesture's last write.
    axQueue_->async([this, pid, window = std::move(window)] {
        if (window) {
            window->settle();
        }
        cleanUpAfterGesture(pid);
    });
    isDragging_ = false;
    isResizing_ = false;
}

void DragSession::start(std::shared_ptr<Gesture> gesture, Point mouse) {
    gesture->number = ++gesturesBegun_;
    gesture->samplesPointer = platform_.input.canSamplePointer();
    samplesPointer_ = gesture->samplesPointer;
    // A resize keeps the tick's pace; a move that can read the pointer follows each motion.
    const bool followsMotion = !gesture->isResize && gesture->samplesPointer;
    {
        // Published together with the starting pointer position, so that no
        // tick pairs this gesture with the previous gesture's pointer.
        std::lock_guard lock(gestureMutex_);
        latestMouse_.store(mouse);
        gesture_ = std::move(gesture);
    }
    // The session outlives its timer and queue (both are destroyed first), so
    // the tick may refer to it directly.
    updateTimer_ =
        axQueue_->scheduleRepeating(tickPeriod, tickLeeway, [this] { applyLatestMouse(); });
    if (followsMotion) {
        motionFollower_ = platform_.input.followPointerMotion(
            [this, number = gesturesBegun_] { tickSoon(number); });
    }
}

// Runs on the platform's thread for each run of motion. A queued tick reads the pointer when it
// runs, so one waiting is enough however much the pointer moves meanwhile. Unlike the timer's, a
// queued tick cannot be taken back when the gesture ends, so it acts for its own gesture only:
// the next gesture's first movement must come after this one's clean-up.
void DragSession::tickSoon(std::uint64_t gestureNumber) {
    if (tickQueued_.exchange(true)) {
        return;
    }
    axQueue_->async([this, gestureNumber] {
        tickQueued_ = false;
        applyLatestMouse(gestureNumber);
    });
}

void DragSession::stopUpdateTimer() {
    // Gone first: no motion queues a tick for a gesture that ended.
    motionFollower_.reset();
    if (updateTimer_) {
        updateTimer_->cancel();
        updateTimer_.reset();
    }
}

void DragSession::applyLatestMouse(std::optional<std::uint64_t> onlyForGesture) {
    std::shared_ptr<const Gesture> gesture;
    {
        std::lock_guard lock(gestureMutex_);
        gesture = gesture_;
    }
    if (!gesture || !gesture->window || (onlyForGesture && *onlyForGesture != gesture->number)) {
        return;
    }
    const std::optional<Point> pointer = pointerForTick(gesture);
    if (!pointer) {
        return;
    }
    const Point mouse = *pointer;
    const double dx = mouse.x - gesture->initialMousePosition.x;
    const double dy = mouse.y - gesture->initialMousePosition.y;
    if (dx == 0 && dy == 0) {
        return;
    }
    if (setupAppliedToGesture_ != gesture->number) {
        setupAppliedToGesture_ = gesture->number;
        applyFirstMovementSetup(*gesture);
    }
    WindowHandle& window = *gesture->window;
    if (!gesture->isResize) {
        Point origin{gesture->initialWindowPosition.x + dx, gesture->initialWindowPosition.y + dy};
        if (gesture->cachedSnapEdges) {
            origin =
                MagneticsEngine::snap(origin, gesture->cachedWindowSize, *gesture->cachedSnapEdges);
        }
        window.setPosition(origin);
        return;
    }
    const Rect frame =
        resizedFrame(gesture->corner, gesture->initialWindowFrame, dx, dy, gesture->screenBounds);
    window.setPosition(frame.origin());
    window.setSize(frame.size());
}

// The position this tick applies to the gesture's window; nullopt when the
// tick has nothing to do and the next one tries again.
std::optional<Point> DragSession::pointerForTick(const std::shared_ptr<const Gesture>& gesture) {
    std::optional<Point> sampled;
    if (gesture->samplesPointer && followingPointer_.load()) {
        // Read outside the lock: end() and begin on the main thread never
        // wait for this round trip.
        const std::optional<PointerSample> sample = platform_.input.samplePointer();
        if (!sample) {
            return std::nullopt;
        }
        if (sample->flags != seenModifiers_.load()) {
            return std::nullopt;
        }
        sampled = sample->location;
    }
    // The pointer is taken under the session's lock and only if the gesture
    // is still the published one: a tick that races with end() and a new
    // begin applies one gesture's pointer to that gesture's window only.
    std::lock_guard lock(gestureMutex_);
    if (gesture_ != gesture) {
        return std::nullopt;
    }
    if (sampled) {
        latestMouse_.store(*sampled);
        return sampled;
    }
    return latestMouse_.load();
}

void DragSession::applyFirstMovementSetup(const Gesture& gesture) {
    if (gesture.bringToFront) {
        gesture.window->raise();
        gesture.window->makeMain();
    }
    restoreEnhancedUI_ = disableEnhancedUserInterface(gesture.pid);
}

// Assistive modes of some applications animate every programmatic move; it is
// switched off for the gesture and back on afterwards.
bool DragSession::disableEnhancedUserInterface(std::int32_t pid) {
    const auto enabled =
        platform_.windowControl.applicationAttribute(pid, enhancedUserInterfaceAttribute);
    if (!enabled || !*enabled) {
        return false;
    }
    platform_.windowControl.setApplicationAttribute(pid, enhancedUserInterfaceAttribute, false);
    return true;
}

void DragSession::cleanUpAfterGesture(std::int32_t pid) {
    if (restoreEnhancedUI_ && pid != 0) {
        platform_.windowControl.setApplicationAttribute(pid, enhancedUserInterfaceAttribute, true);
    }
    setupAppliedToGesture_ = 0;
    restoreEnhancedUI_ = false;
}

ResizeCorner DragSession::cornerFor(Point mouse, Rect frame) {
    const bool left = mouse.x < frame.midX();
    const bool top = mouse.y < frame.midY();
    if (top) {
        return left ? ResizeCorner::topLeft : ResizeCorner::topRight;
    }
    return left ? ResizeCorner::bottomLeft : ResizeCorner::bottomRight;
}

Rect DragSession::resizedFrame(ResizeCorner corner, Rect start, double dx, double dy,
                               Rect screenBounds) {
    const double m = minimumResizeDimension;
    const bool dragsLeft = corner == ResizeCorner::topLeft || corner == ResizeCorner::bottomLeft;
    const bool dragsTop = corner == ResizeCorner::topLeft || corner == ResizeCorner::topRight;
    const double width =
        dragsLeft ? atMost(atLeast(start.width - dx, m), start.maxX() - screenBounds.minX())
                  : atMost(atLeast(start.width + dx, m), screenBounds.maxX() - start.minX());
    const double height =
        dragsTop ? atMost(atLeast(start.height - dy, m), start.maxY() - screenBounds.minY())
                 : atMost(atLeast(start.height + dy, m), screenBounds.maxY() - start.minY());
    const double x = dragsLeft ? start.maxX() - width : start.minX();
    const double y = dragsTop ? start.maxY() - height : start.minY();
    return {x, y, width, height};
}

Rect DragSession::screenFrameContaining(Rect r, const std::vector<DisplayInfo>& screens) {
    if (screens.empty()) {
        return {0, 0, 1920, 1080};
    }
    const double primaryHeight = screens.front().frame.height;
    for (const auto& screen : screens) {
        const Rect& f = screen.frame;
        const Rect turned{f.x, primaryHeight - f.y - f.height, f.width, f.height};
        if (turned.intersects(r)) {
            return turned;
        }
    }
    return {0, 0, screens.front().frame.width, screens.front().frame.height};
}

}  // namespace gf
