#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "FrameWatcher.h"
#include "platform/Rect.h"
#include "x11/X11Desktop.h"
#include "x11/XTestDriver.h"

namespace gf::bench {

// Who carries out the gesture: Glimmerfold with its keys, or openbox with Alt and a button.
enum class Mover { glimmerfold, openbox };
enum class Gesture { move, resize };

const char* moverName(Mover mover);

// Where the pointer is when the window has taken hold of it, and what the
// frame's key is minus the pointer from then on.
struct Hold {
    int pointerX = 0;
    int pointerY = 0;
    int offsetA = 0;
    int offsetB = 0;
};

// What every measurement works on: the bench desktop, the hands on a connection of their own,
// the one xlogo window every gesture moves (kept at its home between measurements) and the
// watcher that reports its frame.
class BenchStage {
  public:
    static constexpr int kHomeX = 300;
    static constexpr int kHomeY = 250;
    static constexpr int kClientWidth = 200;
    static constexpr int kClientHeight = 150;

    // A private desktop whose openbox keeps its Alt + drag move and resize, the reference every
    // number is compared with, and a tray host for Glimmerfold.
    static test::X11Desktop::Options desktopOptions();

    // Throws std::runtime_error when the window or the instruments cannot be set up.
    explicit BenchStage(test::X11Desktop& desktop);

    test::X11Desktop& desktop() { return desktop_; }
    test::XTestDriver& hands() { return *hands_; }
    FrameWatcher& watcher() { return *watcher_; }
    test::WindowId client() const { return client_; }
    test::WindowId frame() const { return frame_; }

    // Holds the mover's keys (and button) over the grab point and nudges the pointer until the
    // window follows; nullopt, with everything let go, when it never does.
    std::optional<Hold> takeHold(Mover mover, Gesture gesture);
    void pressFor(Mover mover, Gesture gesture);
    // Lets go, then waits until the frame has been still for `still`.
    void letGo(Mover mover, Gesture gesture, std::chrono::milliseconds still);
    bool placeHome();
    // The home with room around it, which other windows keep clear of.
    Rect homeClearance() const;
    // A resize takes hold near the bottom-right corner, a move in the middle.
    std::pair<int, int> grabPoint(Gesture gesture) const;
    static std::int64_t frameKey(Gesture gesture, const FrameReport& report);

  private:
    test::X11Desktop& desktop_;
    std::unique_ptr<test::XTestDriver> hands_;
    test::WindowId client_ = 0;
    test::WindowId frame_ = 0;
    std::unique_ptr<FrameWatcher> watcher_;
};

}  // namespace gf::bench
