#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

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
    static BenchPlan smokeTest() {
        using namespace std::chrono_literals;
        BenchPlan plan;
        plan.smoke = true;
        plan.ratesHz = {250};
        plan.latencySeconds = 0.4;
        plan.idleSeconds = 0.3;
        plan.startupLaunches = 1;
        plan.gestures = 20;
        plan.sceneSizes = {10};
        plan.gestureStartTrials = 3;
        plan.autoRaiseCrossings = 2;
        plan.settleAfterLaunch = 200ms;
        plan.withResize = false;
        return plan;
    }
};

}  // namespace gf::bench
