#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "LatencyMatch.h"
#include "ProcessMeter.h"

namespace gf::bench {

// CPU and wake-ups of the three processes on a window's path to the screen.
struct DesktopCosts {
    ProcessUsage glimmerfold;
    ProcessUsage windowManager;
    ProcessUsage server;

    double totalCpuPercent() const {
        return glimmerfold.cpuPercent + windowManager.cpuPercent + server.cpuPercent;
    }
};

// One gesture driven at one input rate, by Glimmerfold or by openbox.
struct LatencyRun {
    std::string mover;    // "Glimmerfold" or "openbox"
    std::string gesture;  // "move" or "resize"
    int rateHz = 0;
    bool autoRaise = false;
    std::size_t motions = 0;
    double seconds = 0;  // from the first motion until the frame showed the last
    Distribution latency;
    std::vector<double> latenciesMs;  // every motion's, kept only when asked for
    std::size_t shownExactly = 0;
    std::size_t neverShown = 0;
    std::size_t strayReports = 0;
    DesktopCosts costs;
    std::string problem;  // why the run produced no numbers; empty when it did
};

// Glimmerfold with no gesture: at rest, or with the pointer moving and no key held.
struct IdleRun {
    int rateHz = 0;  // 0: no input at all
    bool autoRaise = false;
    double seconds = 0;
    ProcessUsage glimmerfold;
};

// Keys pressed to a move gesture begun, over the window under the pointer with
// `windows` client windows open (that one included). Each figure is a
// distribution over the trials, in ms from the moment the last key was sent.
struct GestureStartRun {
    std::size_t windows = 0;
    std::size_t trials = 0;
    // By when the gesture had read the pointer position it measures from.
    Distribution pointerReadMs;
    // By when it had read the pointer to move the window for the first time:
    // the gesture has begun and follows the hand.
    Distribution followingMs;
    // When the frame reported its first new position.
    Distribution frameMovedMs;
    std::string problem;  // why the run produced no numbers; empty when it did
};

// Auto raise: from the last motion of a crossing onto another window until the
// server reports that window above the one the pointer came from, minus the
// configured delay.
struct AutoRaiseDelayRun {
    double delayMs = 0;
    std::size_t crossings = 0;
    Distribution lateMs;
    std::string problem;
};

struct MemoryResult {
    double startupKiB = 0;
    double afterWarmUpKiB = 0;  // after the first tenth of the gestures
    double afterGesturesKiB = 0;
    std::size_t gesturesTried = 0;
    std::size_t gesturesTaken = 0;  // those in which the window followed
};

struct BenchResults {
    std::string mode;  // "full" or "smoke"
    std::string started;
    std::string machine;
    std::vector<double> startupMs;
    std::vector<LatencyRun> latencyRuns;
    std::vector<IdleRun> idleRuns;
    std::vector<GestureStartRun> gestureStarts;
    std::vector<AutoRaiseDelayRun> autoRaiseDelays;
    MemoryResult memory;
    std::vector<std::string> problems;
};

}  // namespace gf::bench
