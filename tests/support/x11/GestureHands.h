#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <ostream>

#include "platform/Point.h"
#include "platform/Rect.h"
#include "x11/X11Desktop.h"

namespace gf::test {

enum class GestureKind { move, resize };

// For test names and failure messages.
void PrintTo(GestureKind kind, std::ostream* out);

// What one whole gesture did, for checks and for failure messages.
struct GestureOutcome {
    bool began = false;  // the frame followed the pointer at all
    Rect start;          // the frame before
    Point origin;        // the pointer position the gesture measured from
    Rect expected;       // where the frame should have landed
    Rect landed;         // where it did land

    bool exact() const { return began && landed == expected; }
};

std::ostream& operator<<(std::ostream& out, const GestureOutcome& outcome);

// The user's hands for Glimmerfold's gestures with the default keys: Control + Super moves,
// Control + Alt resizes. Everything is checked against the frame the user sees.
class GestureHands {
  public:
    explicit GestureHands(X11Desktop& desktop);

    // Holds the gesture's keys with the pointer at (x, y) over `window`, then nudges the pointer a
    // dozen pixels at a time (each coordinate of `towards` is +1 or -1; right and down by default)
    // until the frame follows, since Glimmerfold sees the keys a moment after the server does.
    // While it does not follow, the keys are let go and pressed again, so a program that is still
    // starting gets its chance. Returns the pointer position the gesture measures from (for a
    // resize, from the bottom-right corner); nullopt when the frame never followed.
    std::optional<Point> begin(GestureKind kind, WindowId window, int x, int y,
                               std::chrono::milliseconds timeout = std::chrono::seconds(10),
                               Point towards = {1, 1});
    // Holds the gesture's keys without moving the pointer.
    void hold(GestureKind kind);
    // Lets go of the keys, the gesture's own key first unless `controlFirst`.
    void release(bool controlFirst = false);

    // The frame a gesture that began at `origin` on a frame `start` should give with the pointer
    // at (x, y), without snapping.
    static Rect expectedFrame(GestureKind kind, const Rect& start, Point origin, int x, int y);

    // A whole gesture: begins over the frame's middle (a move) or near its bottom-right corner (a
    // resize), takes the pointer by (dx, dy) in steps and lets go once the frame landed where the
    // pointer took it (or where `snap` puts that frame, when given) or the wait is over.
    GestureOutcome perform(GestureKind kind, WindowId window, int dx, int dy,
                           const std::function<Rect(const Rect&)>& snap = {});

  private:
    std::optional<Point> nudgeUntilFollowed(GestureKind kind, WindowId window, const Rect& before,
                                            int x, int y, Point towards);

    X11Desktop& desktop_;
    GestureKind held_ = GestureKind::move;
    bool holding_ = false;
};

}  // namespace gf::test
