#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "engine/LatestMouse.h"
#include "engine/ResizeCorner.h"
#include "engine/SnapEdges.h"
#include "platform/DisplayInfo.h"
#include "platform/Platform.h"
#include "platform/Rect.h"
#include "platform/WindowHandle.h"
#include "platform/WindowState.h"

namespace gf {

class Settings;

// The one move or resize gesture that can be in progress. Begin and end run on
// the main thread; ticks on the session's own serial queue apply the latest
// pointer position to the window, so no window call ever runs on the thread
// that receives input. Where the platform can sample the pointer, the tick
// reads the position itself, so pointer motion need not wake the main thread
// at all during a gesture. A move ticks as soon as the platform says the
// pointer moved, to follow the hand as closely as the window manager's own
// drag; an 8 ms tick paces resizes (each size makes the client repaint) and
// stands in for silent motion reports.
//
// A fullscreen window is never taken by a gesture. A maximized one first leaves
// that state on the first movement: once the window manager has given it back
// its earlier size, a move carries it on under the pointer and a resize goes on
// from the frame it had. A cancelled gesture puts its window back as it began.
class DragSession {
  public:
    static constexpr double minimumResizeDimension = 50.0;
    static constexpr const char* enhancedUserInterfaceAttribute = "enhancedUserInterface";

    // Creates the serial queue "com.glimmerfold.ax" for the ticks.
    DragSession(Settings& settings, Platform platform);
    // Ends a gesture in progress, giving back what it changed, and waits for
    // the queue to finish.
    ~DragSession();
    DragSession(const DragSession&) = delete;
    DragSession& operator=(const DragSession&) = delete;

    // Each declines, leaving the session as it was, when the window's geometry
    // cannot be read (or, for a resize, its size cannot be set), or when the
    // window is fullscreen.
    void beginMove(std::shared_ptr<WindowHandle> window, std::int32_t pid, Point mouse);
    void beginResize(std::shared_ptr<WindowHandle> window, std::int32_t pid, Point mouse);
    // Ends whatever gesture is in progress; harmless when idle.
    void end();
    // Ends the gesture in progress and puts its window back where and as large as it was when
    // the gesture began, maximized again if it was. Harmless when idle.
    void cancel();

    bool isDragging() const { return isDragging_; }
    bool isResizing() const { return isResizing_; }
    // Whether a write of the gesture in progress found its window gone.
    bool hasLostWindow() const {
        return (isDragging_ || isResizing_) && windowLostInGesture_.load() == gesturesBegun_;
    }
    // Whether the gesture in progress reads the pointer on its ticks, so that
    // pointer-moved events are not needed for it.
    bool samplesPointer() const { return (isDragging_ || isResizing_) && samplesPointer_; }
    void setLatestMouse(Point p) { latestMouse_.store(p); }
    // Whether ticks that read the pointer themselves keep doing so (on by
    // default). While off, the window stays where the last position put it
    // and the gesture goes on until it is ended. May be called from any thread.
    void setFollowingPointer(bool following) { followingPointer_.store(following); }
    // The modifiers as the main thread last saw them change. A tick that reads
    // the pointer applies it only when the modifiers read with it are these:
    // otherwise a change is still on its way to the main thread (the keys let
    // go, perhaps pressed again already for the next gesture), and the pointer
    // belongs to whatever that change decides. May be called from any thread.
    void noteModifiers(std::uint64_t flags) { seenModifiers_.store(flags); }
    ResizeCorner corner() const { return corner_; }

    // The frame for a corner dragged by (dx, dy): at least the minimum size, at
    // most what the display leaves towards the dragged side.
    static Rect resizedFrame(ResizeCorner corner, Rect start, double dx, double dy,
                             Rect screenBounds);
    // The first display that the rectangle overlaps; the primary display's size
    // at the origin when none does.
    static Rect screenFrameContaining(Rect r, const std::vector<DisplayInfo>& screens);
    static ResizeCorner cornerFor(Point mouse, Rect frame);

  private:
    // Everything a tick needs about one gesture, fixed when the gesture begins.
    // Ticks take the whole snapshot under the lock, so a tick that races with
    // end() sees either all of a gesture or nothing.
    struct Gesture {
        std::uint64_t number = 0;
        bool isResize = false;
        std::shared_ptr<WindowHandle> window;
        std::int32_t pid = 0;
        Point initialMousePosition;
        Point initialWindowPosition;
        Size cachedWindowSize;
        std::optional<SnapEdges> cachedSnapEdges;
        // For a move too: the frame a cancel puts back. Its size is unknown when it could not
        // be read; only the position then goes back.
        Rect initialWindowFrame;
        bool initialSizeKnown = true;
        WindowState initialState;
        ResizeCorner corner = ResizeCorner::bottomRight;
        Rect screenBounds;
        bool bringToFront = false;
        bool samplesPointer = false;
    };

    // Where a move puts the window's corner after leaving the maximized state, and the size
    // it snaps with: the restored frame keeps the pointer on the same relative spot.
    struct RestoredMove {
        Point windowPosition;
        Size windowSize;
    };
    // How far the gesture on a maximized window has come in leaving that state.
    struct Unmaximizing {
        std::uint64_t gesture = 0;  // none while 0
        bool done = false;
        std::optional<Rect> lastSeenFrame;
        int steadyTicks = 0;  // timer ticks the frame has stayed as last seen
        Rect restoredFrame;   // where the window manager put the window back
        RestoredMove move;
    };

    void start(std::shared_ptr<Gesture> gesture, Point mouse);
    std::shared_ptr<const Gesture> takeGesture();
    void stopUpdateTimer();
    void tickSoon(std::uint64_t gestureNumber);
    void applyLatestMouse(std::optional<std::uint64_t> onlyForGesture = std::nullopt);
    std::optional<Point> pointerForTick(const std::shared_ptr<const Gesture>& gesture);
    void applyFirstMovementSetup(const Gesture& gesture);
    bool hasLeftMaximizedState(const Gesture& gesture, bool timerTick);
    void putBack(const Gesture& gesture);
    void noteWrite(const Gesture& gesture, bool succeeded);
    void cleanUpAfterGesture(std::int32_t pid);
    bool disableEnhancedUserInterface(std::int32_t pid);

    Settings& settings_;
    Platform platform_;
    LatestMouse latestMouse_;
    std::atomic<bool> followingPointer_{true};
    std::atomic<std::uint64_t> seenModifiers_{0};
    // A motion-driven tick is queued and has not started: further motion needs no other.
    std::atomic<bool> tickQueued_{false};

    // Guards the published gesture; taken before latestMouse_'s own lock when both are needed.
    mutable std::mutex gestureMutex_;
    std::shared_ptr<const Gesture> gesture_;

    // Only touched on the queue, by ticks and clean-ups.
    std::uint64_t setupAppliedToGesture_ = 0;
    bool restoreEnhancedUI_ = false;
    Unmaximizing unmaximizing_;
    // Written on the queue, read on the main thread.
    std::atomic<std::uint64_t> windowLostInGesture_{0};

    // Only touched on the main thread.
    std::uint64_t gesturesBegun_ = 0;
    bool isDragging_ = false;
    bool isResizing_ = false;
    bool samplesPointer_ = false;
    ResizeCorner corner_ = ResizeCorner::bottomRight;

    // Last, so that they go first: the timer is cancelled, then the queue runs
    // what was submitted and joins while the state above still exists.
    std::unique_ptr<SerialQueue> axQueue_;
    std::unique_ptr<Timer> updateTimer_;
    std::unique_ptr<MonitorToken> motionFollower_;
};

}  // namespace gf
