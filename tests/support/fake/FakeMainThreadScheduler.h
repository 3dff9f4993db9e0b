#pragma once

#include "fake/VirtualTimeline.h"
#include "platform/MainThreadScheduler.h"

namespace gf::test {

// Main-thread timers on virtual time.
class FakeMainThreadScheduler final : public MainThreadScheduler {
  public:
    explicit FakeMainThreadScheduler(VirtualTimeline& timeline) : timeline_(timeline) {}

    std::unique_ptr<Timer> scheduleRepeating(std::chrono::milliseconds period,
                                             std::function<void()> handler) override {
        return timeline_.schedule(timeline_.now() + period, period, std::move(handler));
    }
    std::unique_ptr<Timer> scheduleOnce(std::chrono::milliseconds delay,
                                        std::function<void()> handler) override {
        return timeline_.schedule(timeline_.now() + delay, VirtualTimeline::Duration::zero(),
                                  std::move(handler));
    }

  private:
    VirtualTimeline& timeline_;
};

}  // namespace gf::test
