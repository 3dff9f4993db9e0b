#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/Timer.h"

namespace gf::test {

// Work runs only when a test advances the clock, on its thread, in deadline order (then order
// scheduled), including work a handler schedules for a time already reached.
class VirtualTimeline {
  public:
    using Duration = std::chrono::microseconds;
    using Group = std::uint64_t;  // the work of one serial queue; 0 is the main thread

    Duration now() const { return now_; }
    void advance(Duration d);

    // Due at `firstDeadline`, then every `period` when positive.
    std::unique_ptr<Timer> schedule(Duration firstDeadline, Duration period,
                                    std::function<void()> handler, Group group = 0);
    // A task due now that cannot be cancelled.
    void post(Group group, std::function<void()> task);
    std::size_t scheduledCount();

    Group newGroup() { return nextGroup_++; }
    // Runs the group's tasks and cancels its timers, as a serial queue does when destroyed.
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
