#include "fake/VirtualTimeline.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace gf::test {

namespace {

struct Entry {
    VirtualTimeline::Duration deadline{0};
    VirtualTimeline::Duration period{0};
    std::function<void()> handler;
    VirtualTimeline::Group group = 0;
    std::uint64_t sequence = 0;
    std::atomic<bool> active{true};
};

}  // namespace

struct VirtualTimeline::State {
    mutable std::mutex mutex;
    std::atomic<std::int64_t> nowMicros{0};
    std::vector<std::shared_ptr<Entry>> entries;
    std::uint64_t nextSequence = 1;
    Group nextGroup = 1;
    bool running = false;

    void add(const std::shared_ptr<Entry>& entry) {
        std::lock_guard lock(mutex);
        entry->sequence = nextSequence++;
        entries.push_back(entry);
    }

    // The earliest active entry due at or before `limit`; the chosen entry is
    // rescheduled (repeating) or retired (one-shot) before it runs.
    std::shared_ptr<Entry> takeNextDue(Duration limit, const Group* onlyGroup) {
        std::lock_guard lock(mutex);
        std::erase_if(entries, [](const auto& e) { return !e->active; });
        std::shared_ptr<Entry> best;
        for (const auto& e : entries) {
            if (onlyGroup && (e->group != *onlyGroup || e->period > Duration::zero())) {
                continue;
            }
            if (!onlyGroup && e->deadline > limit) {
                continue;
            }
            if (!best || e->deadline < best->deadline ||
                (e->deadline == best->deadline && e->sequence < best->sequence)) {
                best = e;
            }
        }
        if (!best) {
            return nullptr;
        }
        if (!onlyGroup) {
            nowMicros = std::max<std::int64_t>(nowMicros, best->deadline.count());
        }
        if (best->period > Duration::zero()) {
            best->deadline += best->period;
            best->sequence = nextSequence++;
        } else {
            best->active = false;
        }
        return best;
    }
};

namespace {

class VirtualTimer final : public Timer {
  public:
    explicit VirtualTimer(std::shared_ptr<Entry> entry) : entry_(std::move(entry)) {}
    ~VirtualTimer() override { cancel(); }
    void cancel() override { entry_->active = false; }
    bool isActive() const override { return entry_->active; }

  private:
    std::shared_ptr<Entry> entry_;
};

}  // namespace

VirtualTimeline::VirtualTimeline() : state_(std::make_shared<State>()) {}
VirtualTimeline::~VirtualTimeline() = default;

VirtualTimeline::Duration VirtualTimeline::now() const {
    return Duration(state_->nowMicros.load());
}

void VirtualTimeline::advance(Duration d) {
    if (state_->running) {
        throw std::logic_error("VirtualTimeline::advance called from scheduled work");
    }
    const Duration target = now() + d;
    state_->running = true;
    while (auto entry = state_->takeNextDue(target, nullptr)) {
        entry->handler();
    }
    state_->running = false;
    state_->nowMicros = std::max<std::int64_t>(state_->nowMicros, target.count());
}

void VirtualTimeline::runDue() {
    advance(Duration::zero());
}

std::unique_ptr<Timer> VirtualTimeline::schedule(Duration firstDeadline, Duration period,
                                                 std::function<void()> handler, Group group) {
    auto entry = std::make_shared<Entry>();
    entry->deadline = firstDeadline;
    entry->period = period;
    entry->handler = std::move(handler);
    entry->group = group;
    state_->add(entry);
    return std::make_unique<VirtualTimer>(std::move(entry));
}

void VirtualTimeline::post(Group group, std::function<void()> task) {
    auto entry = std::make_shared<Entry>();
    entry->deadline = now();
    entry->handler = std::move(task);
    entry->group = group;
    state_->add(entry);
}

std::size_t VirtualTimeline::scheduledCount() const {
    std::lock_guard lock(state_->mutex);
    return std::ranges::count_if(state_->entries, [](const auto& e) { return e->active.load(); });
}

VirtualTimeline::Group VirtualTimeline::newGroup() {
    std::lock_guard lock(state_->mutex);
    return state_->nextGroup++;
}

void VirtualTimeline::drainGroup(Group group) {
    {
        std::lock_guard lock(state_->mutex);
        for (const auto& e : state_->entries) {
            if (e->group == group && e->period > Duration::zero()) {
                e->active = false;
            }
        }
    }
    while (auto entry = state_->takeNextDue(Duration::zero(), &group)) {
        entry->handler();
    }
}

}  // namespace gf::test
