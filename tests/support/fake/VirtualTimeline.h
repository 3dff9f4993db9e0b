#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/Timer.h"

namespace gf::test {

// Virtual time for the fake desktop: scheduled work runs only when a test advances the clock, on
// the test's own thread, in deadline order (ties in the order scheduled). Work scheduled by a
// handler for a time already reached runs in the same advance.
class VirtualTimeline {
  public:
    using Duration = std::chrono::microseconds;
    using Group = std::uint64_t;  // the work of one serial queue; 0 is the main thread

    Duration now() const { return now_; }
    void advance(Duration d);

    // A timer first due at `firstDeadline`, then every `period` when the period is positive.
    std::unique_ptr<Timer> schedule(Duration firstDeadline, Duration period,
                                    std::function<void()> handler, Group group = 0);
    // A task due now that cannot be cancelled.
    void post(Group group, std::function<void()> task);
    // Timers and tasks still to run; 0 means nothing can wake up.
    std::size_t scheduledCount();

    Group newGroup() { return nextGroup_++; }
    // Runs the group's posted tasks at once, in order, and cancels its timers: what a serial
    // queue does when it is destroyed.
    void drainGroup(Group group);

    struct Entry;

  private:
    std::shared_ptr<Entry> add(Duration deadline, Duration period, std::function<void()> handler,
                               Group group);
    // The earliest active entry that `accept` lets through, already rescheduled or retired.
    std::shared_ptr<Entry> takeFirst(const std::function<bool(const Entry&)>& accept);

    Duration now_{0};
    std::vector<std::shared_ptr<Entry>> entries_;
    std::uint64_t nextSequence_ = 1;
    Group nextGroup_ = 1;
    bool running_ = false;
};

}  // namespace gf::test
