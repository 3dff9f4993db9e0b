#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "BenchPlan.h"
#include "BenchResults.h"
#include "BenchStage.h"
#include "MotionPath.h"
#include "x11/ChildProcess.h"
#include "x11/GlimmerfoldLauncher.h"

namespace gf::bench {

// Drives the measurements on one bench desktop with one xlogo window.
class Bench {
  public:
    Bench(test::X11Desktop& desktop, std::filesystem::path glimmerfold, BenchPlan plan);
    ~Bench();

    // Throws std::runtime_error when the desktop cannot be set up at all;
    // a part that fails is noted in the results and the others still run.
    BenchResults run();

  private:
    void runPart(const std::string& name, const std::function<void()>& part);
    void launchGlimmerfold(bool autoRaise, BenchResults& results);
    void quitGlimmerfold();
    void measureWithAutoRaise(BenchResults& results);
    void measureStartups(BenchResults& results);
    IdleRun measureIdle(int rateHz, bool autoRaise);
    void measureMemory(BenchResults& results);
    LatencyRun measureLatency(Mover mover, Gesture gesture, int rateHz, bool autoRaise);

    BenchPlan plan_;
    BenchStage stage_;
    test::GlimmerfoldLauncher launcher_;
    std::unique_ptr<test::ChildProcess> glimmerfold_;
    MotionPath path_{200};
};

}  // namespace gf::bench
