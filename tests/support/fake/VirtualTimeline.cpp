#include "fake/VirtualTimeline.h"

#include <algorithm>
#include <stdexcept>

namespace gf::test {

struct VirtualTimeline::Entry {
    Duration deadline{0};
    Duration period{0};
    std::function<void()> handler;
    Group group = 0;
    std::uint64_t sequence = 0;
    bool active = true;
};

namespace {

class VirtualTimer final : public Timer {
  public:
    explicit VirtualTimer(std::shared_ptr<VirtualTimeline::Entry> entry)
        : entry_(std::move(entry)) {}
    ~VirtualTimer() override { cancel(); }
    void cancel() override { entry_->active = false; }
    bool isActive() const override { return entry_->active; }

  private:
    std::shared_ptr<VirtualTimeline::Entry> entry_;
};

}  // namespace

std::shared_ptr<VirtualTimeline::Entry> VirtualTimeline::add(Duration deadline, Duration period,
                                                             std::function<void()> handler,
                                                             Group group) {
    auto entry = std::make_shared<Entry>(
        Entry{deadline, period, std::move(handler), group, nextSequence_++, true});
    entries_.push_back(entry);
    return entry;
}

std::shared_ptr<VirtualTimeline::Entry> VirtualTimeline::takeFirst(
    const std::function<bool(const Entry&)>& accept) {
    std::erase_if(entries_, [](const auto& e) { return !e->active; });
    std::shared_ptr<Entry> best;
    for (const auto& e : entries_) {
        if (accept(*e) && (!best || std::tie(e->deadline, e->sequence) <
                                        std::tie(best->deadline, best->sequence))) {
            best = e;
        }
    }
    if (best && best->period > Duration::zero()) {
        best->deadline += best->period;
        best->sequence = nextSequence_++;
    } else if (best) {
        best->active = false;
    }
    return best;
}

void VirtualTimeline::advance(Duration d) {
    if (running_) {
        throw std::logic_error("VirtualTimeline::advance called from scheduled work");
    }
    const Duration target = now_ + d;
    running_ = true;
    while (auto entry = takeFirst([&](const Entry& e) { return e.deadline <= target; })) {
        now_ = std::max(now_, entry->deadline - entry->period);  // the deadline just reached
        entry->handler();
    }
    running_ = false;
    now_ = target;
}

std::unique_ptr<Timer> VirtualTimeline::schedule(Duration firstDeadline, Duration period,
                                                 std::function<void()> handler, Group group) {
    return std::make_unique<VirtualTimer>(add(firstDeadline, period, std::move(handler), group));
}

void VirtualTimeline::post(Group group, std::function<void()> task) {
    add(now_, Duration::zero(), std::move(task), group);
}

std::size_t VirtualTimeline::scheduledCount() {
    std::erase_if(entries_, [](const auto& e) { return !e->active; });
    return entries_.size();
}

void VirtualTimeline::drainGroup(Group group) {
    for (const auto& e : entries_) {
        if (e->group == group && e->period > Duration::zero()) {
            e->active = false;
        }
    }
    while (auto entry = takeFirst([&](const Entry& e) { return e.group == group; })) {
        entry->handler();
    }
}

}  // namespace gf::test
