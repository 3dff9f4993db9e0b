#pragma once

#include <memory>
#include <optional>
#include <string>

#include "BenchPlan.h"
#include "BenchResults.h"
#include "BenchStage.h"
#include "GestureStartTiming.h"
#include "WindowCrowd.h"

namespace gf::bench {

class StackingWatcher;

// The measurements among other windows: how soon a gesture takes hold with many windows open,
// and how close to its delay auto raise brings a window forward.
class CrowdBench {
  public:
    CrowdBench(BenchStage& stage, const BenchPlan& plan);

    void measureGestureStarts(BenchResults& results);
    AutoRaiseDelayRun measureAutoRaiseDelay();

  private:
    GestureStartRun measureGestureStartAmong(WindowCrowd& crowd, std::size_t windows);
    std::optional<GestureStartTiming> timeGestureStart(const WindowCrowd& crowd,
                                                       std::string* problem);
    bool lowerBelow(const WindowCrowd& crowd);
    std::optional<double> timeAutoRaise(StackingWatcher& stacking, test::WindowId from,
                                        test::WindowId to, std::string* problem);
    Clock::time_point crossOnto(const Rect& from, const Rect& to);

    BenchStage& stage_;
    const BenchPlan& plan_;
};

}  // namespace gf::bench
