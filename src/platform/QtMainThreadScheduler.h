#pragma once

#include "platform/MainThreadScheduler.h"

namespace gf {

// Main-thread timers on the Qt event loop. Must be used on the thread that runs
// the loop; the timers are precise, since the engine's periods are short.
class QtMainThreadScheduler final : public MainThreadScheduler {
  public:
    std::unique_ptr<Timer> scheduleRepeating(std::chrono::milliseconds period,
                                             std::function<void()> handler) override;
    std::unique_ptr<Timer> scheduleOnce(std::chrono::milliseconds delay,
                                        std::function<void()> handler) override;
};

}  // namespace gf
