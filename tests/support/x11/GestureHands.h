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
void PrintTo(GestureKind kind, std::ostream* out);  // for parameterized tests' names

// What one whole gesture did, for checks and failure messages.
struct GestureOutcome {
    bool began = false;  // the frame followed the pointer at all
    Rect start;
    Point origin;  // the pointer position the gesture measured from
    Rect expected;
    Rect landed;

    bool exact() const { return began && landed == expected; }
};

std::ostream& operator<<(std::ostream& out, const GestureOutcome& outcome);

// The user's hands for the default keys: Control + Super moves, Control + Alt resizes.
class GestureHands {
  public:
    explicit GestureHands(X11Desktop& desktop) : desktop_(desktop) {}

    // Holds the keys and nudges the pointer `towards` (±1 per axis), again and again for a program
    // still starting, until the frame follows; the pointer position the gesture measures from.
    std::optional<Point> begin(GestureKind kind, WindowId window, int x, int y,
                               std::chrono::milliseconds timeout = std::chrono::seconds(10),
                               Point towards = {1, 1});
    void hold(GestureKind kind);
    void release(bool controlFirst = false);  // the gesture's own key first unless controlFirst

    // Where a gesture from `origin` on frame `start` takes the frame with the pointer at (x, y).
    static Rect expectedFrame(GestureKind kind, const Rect& start, Point origin, int x, int y);

    // From the frame's middle or bottom-right corner by (dx, dy); lets go once landed or timed out.
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
