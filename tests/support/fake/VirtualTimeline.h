#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "platform/Timer.h"

namespace gf::test {

// Virtual time for the fake desktop: scheduled work runs only when a test
// advances the clock, on the test's own thread, in deadline order (ties in the
// order scheduled). Work scheduled by a handler for a time already reached runs
// in the same advance.
class VirtualTimeline {
  public:
    using Duration = std::chrono::microseconds;
    using Group = std::uint64_t;  // the work of one serial queue; 0 is the main thread

    VirtualTimeline();
    ~VirtualTimeline();
    VirtualTimeline(const VirtualTimeline&) = delete;
    VirtualTimeline& operator=(const VirtualTimeline&) = delete;

    Duration now() const;
    void advance(Duration d);
    void runDue();

    // A timer first due at `firstDeadline`, then every `period` when the period
    // is positive.
    std::unique_ptr<Timer> schedule(Duration firstDeadline, Duration period,
                                    std::function<void()> handler, Group group = 0);
    // A task due now that cannot be cancelled.
    void post(Group group, std::function<void()> task);

    // Timers and tasks still to run; 0 means nothing can wake up.
    std::size_t scheduledCount() const;

    Group newGroup();
    // Runs the group's posted tasks at once, in order, and cancels its timers:
    // what a serial queue does when it is destroyed.
    void drainGroup(Group group);

    struct State;

  private:
    std::shared_ptr<State> state_;
};

}  // namespace gf::test
