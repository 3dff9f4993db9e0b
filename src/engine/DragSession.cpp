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
// A window manager may clear the maximized state before it gives the window its earlier size.
// A frame still as large after this many timer ticks had that size before, too.
constexpr int unmaximizeSettleTicks = 12;

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
    const WindowState state = window->state();
    if (state.fullscreen) {
        return;
    }
    const auto size = window->size();
    stopUpdateTimer();
    auto gesture = std::make_shared<Gesture>();
    gesture->isResize = false;
    gesture->initialMousePosition = mouse;
    gesture->initialWindowPosition = *position;
    gesture->cachedWindowSize = size.value_or(Size{});
    gesture->initialWindowFrame = Rect::fromOriginAndSize(*position, gesture->cachedWindowSize);
    gesture->initialSizeKnown = size.has_value();
    gesture->initialState = state;
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
    const WindowState state = window->state();
    if (state.fullscreen) {
        return;
    }
    stopUpdateTimer();
    auto gesture = std::make_shared<Gesture>();
    gesture->isResize = true;
    gesture->initialMousePosition = mouse;
    gesture->initialWindowFrame = Rect::fromOriginAndSize(*position, *size);
    gesture->initialState = state;
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
    const std::shared_ptr<const Gesture> ended = takeGesture();
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

void DragSession::cancel() {
    stopUpdateTimer();
    const std::shared_ptr<const Gesture> cancelled = takeGesture();
    isDragging_ = false;
    isResizing_ = false;
    if (!cancelled) {
        return;
    }
    // Behind the last tick, so nothing the gesture wrote comes after the frame put back.
    axQueue_->async([this, cancelled] {
        putBack(*cancelled);
        cleanUpAfterGesture(cancelled->pid);
    });
}

std::shared_ptr<const DragSession::Gesture> DragSession::takeGesture() {
    std::lock_guard lock(gestureMutex_);
    std::shared_ptr<const Gesture> taken = std::move(gesture_);
    gesture_.reset();
    return taken;
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
    // Motion comes at any rate; only the timer's ticks measure time.
    if (!hasLeftMaximizedState(*gesture, !onlyForGesture)) {
        return;
    }
    WindowHandle& window = *gesture->window;
    if (!gesture->isResize) {
        const bool restored = unmaximizing_.gesture == gesture->number;
        const Point start =
            restored ? unmaximizing_.move.windowPosition : gesture->initialWindowPosition;
        const Size size = restored ? unmaximizing_.move.windowSize : gesture->cachedWindowSize;
        Point origin{start.x + dx, start.y + dy};
        if (gesture->cachedSnapEdges) {
            origin = MagneticsEngine::snap(origin, size, *gesture->cachedSnapEdges);
        }
        noteWrite(*gesture, window.setPosition(origin));
        return;
    }
    const Rect frame =
        resizedFrame(gesture->corner, gesture->initialWindowFrame, dx, dy, gesture->screenBounds);
    const bool placed = window.setPosition(frame.origin());
    const bool sized = window.setSize(frame.size());
    noteWrite(*gesture, placed && sized);
}

// The window manager neither moves nor resizes a maximized window, so the first movement asks
// it to give the window its earlier size, and the gesture waits for that on its next ticks
// rather than keeping anyone waiting. Until then nothing is written.
bool DragSession::hasLeftMaximizedState(const Gesture& gesture, bool timerTick) {
    if (!gesture.initialState.isMaximized()) {
        return true;
    }
    WindowHandle& window = *gesture.window;
    if (unmaximizing_.gesture != gesture.number) {
        unmaximizing_ = Unmaximizing{};
        unmaximizing_.gesture = gesture.number;
        window.setMaximized(false, false);
        return false;
    }
    if (unmaximizing_.done) {
        return true;
    }
    if (window.state().isMaximized()) {
        return false;
    }
    const auto position = window.position();
    const auto size = window.size();
    if (!position || !size) {
        noteWrite(gesture, false);
        return false;
    }
    // A window manager may give back the decorations before the size: only a frame that
    // stays the same across a timer tick is the restored one.
    const Rect frame = Rect::fromOriginAndSize(*position, *size);
    if (unmaximizing_.lastSeenFrame != frame) {
        unmaximizing_.lastSeenFrame = frame;
        unmaximizing_.steadyTicks = 0;
        return false;
    }
    unmaximizing_.steadyTicks += timerTick ? 1 : 0;
    const Rect& maximized = gesture.initialWindowFrame;
    const int ticksNeeded = frame == maximized ? unmaximizeSettleTicks : 1;
    if (unmaximizing_.steadyTicks < ticksNeeded) {
        return false;
    }
    unmaximizing_.done = true;
    unmaximizing_.restoredFrame = frame;
    // The spot the pointer held in the maximized frame, as a fraction of its size, is the spot
    // it holds in the restored one.
    const Point& mouse = gesture.initialMousePosition;
    const double fx = maximized.width > 0 ? (mouse.x - maximized.x) / maximized.width : 0;
    const double fy = maximized.height > 0 ? (mouse.y - maximized.y) / maximized.height : 0;
    unmaximizing_.move = {
        {std::round(mouse.x - fx * frame.width), std::round(mouse.y - fy * frame.height)},
        frame.size()};
    return true;
}

// Nothing to put back when the gesture never wrote. A window that left the maximized state
// for the gesture gets its restored frame back first, so that the window manager remembers
// that one as the size to come back to, and is then maximized again.
void DragSession::putBack(const Gesture& gesture) {
    if (setupAppliedToGesture_ != gesture.number) {
        return;
    }
    WindowHandle& window = *gesture.window;
    if (gesture.initialState.isMaximized()) {
        if (unmaximizing_.gesture == gesture.number && unmaximizing_.done) {
            window.restoreFrame(unmaximizing_.restoredFrame);
        }
        window.setMaximized(gesture.initialState.maximizedHorizontally,
                            gesture.initialState.maximizedVertically);
        return;
    }
    if (gesture.initialSizeKnown) {
        window.restoreFrame(gesture.initialWindowFrame);
    } else {
        window.setPosition(gesture.initialWindowPosition);
    }
}

void DragSession::noteWrite(const Gesture& gesture, bool succeeded) {
    if (!succeeded) {
        windowLostInGesture_ = gesture.number;
    }
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
    for (const auto& screen : screens) {
        if (screen.frame.intersects(r)) {
            return screen.frame;
        }
    }
    return {0, 0, screens.front().frame.width, screens.front().frame.height};
}

}  // namespace gf
