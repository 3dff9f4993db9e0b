#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "BenchDesktop.h"
#include "BenchResults.h"
#include "FrameWatcher.h"
#include "GestureStartTiming.h"
#include "GlimmerfoldProcess.h"
#include "Hands.h"
#include "MotionPath.h"

namespace gf::bench {

// How long each part runs; the smoke plan only proves that every part works.
struct BenchPlan {
    bool smoke = false;
    std::vector<int> ratesHz{250, 500, 1000};
    double latencySeconds = 3.0;
    double idleSeconds = 3.0;
    std::size_t startupLaunches = 5;
    std::size_t gestures = 1000;
    // Client windows open, the moved one included, for the gesture start.
    std::vector<std::size_t> sceneSizes{10, 100, 300};
    std::size_t gestureStartTrials = 20;
    std::size_t autoRaiseCrossings = 20;
    double autoRaiseDelaySeconds = 0.1;
    std::chrono::milliseconds settleAfterLaunch{1000};
    bool withIdle = true;
    bool withMemory = true;
    bool withLatency = true;
    bool withGestureStart = true;
    bool withAutoRaise = true;
    bool withResize = true;
    bool keepRawLatencies = false;

    static BenchPlan full() { return {}; }
    static BenchPlan smokeTest();
};

// Drives the measurements on one bench desktop with one xlogo window.
class StackingWatcher;
class WindowCrowd;

class Bench {
  public:
    Bench(BenchDesktop& desktop, std::filesystem::path glimmerfold, BenchPlan plan);
    ~Bench();

    // Throws std::runtime_error when the desktop cannot be set up at all;
    // a part that fails is noted in the results and the others still run.
    BenchResults run();

  private:
    enum class Mover { glimmerfold, openbox };
    enum class Gesture { move, resize };

    // Where the pointer is when the window has taken hold of it, and what the
    // frame's key is minus the pointer from then on.
    struct Hold {
        int pointerX = 0;
        int pointerY = 0;
        int offsetA = 0;
        int offsetB = 0;
    };

    void runPart(const std::string& name, const std::function<void()>& part);
    void launchGlimmerfold(bool autoRaise, BenchResults& results);
    void measureWithAutoRaise(BenchResults& results);
    void measureStartups(BenchResults& results);
    IdleRun measureIdle(int rateHz, bool autoRaise);
    void measureMemory(BenchResults& results);
    LatencyRun measureLatency(Mover mover, Gesture gesture, int rateHz, bool autoRaise);
    void measureGestureStarts(BenchResults& results);
    GestureStartRun measureGestureStartAmong(WindowCrowd& crowd, std::size_t windows);
    std::optional<GestureStartTiming> timeGestureStart(const WindowCrowd& crowd,
                                                       std::string* problem);
    bool lowerBelow(const WindowCrowd& crowd);
    AutoRaiseDelayRun measureAutoRaiseDelay();
    std::optional<double> timeAutoRaise(StackingWatcher& stacking, test::WindowId from,
                                        test::WindowId to, std::string* problem);
    Clock::time_point crossOnto(const Rect& from, const Rect& to);

    std::optional<Hold> takeHold(Mover mover, Gesture gesture);
    void letGo(Mover mover, Gesture gesture, std::chrono::milliseconds still);
    void pressFor(Mover mover, Gesture gesture);
    bool placeHome();
    Rect homeClearance() const;
    std::pair<int, int> grabPoint(Gesture gesture) const;
    static std::int64_t frameKey(Gesture gesture, const FrameReport& report);

    BenchDesktop& desktop_;
    std::filesystem::path executable_;
    BenchPlan plan_;
    std::unique_ptr<Hands> hands_;
    BenchWindow window_;
    std::unique_ptr<FrameWatcher> watcher_;
    std::unique_ptr<GlimmerfoldProcess> glimmerfold_;
    MotionPath path_{200};
};

}  // namespace gf::bench
