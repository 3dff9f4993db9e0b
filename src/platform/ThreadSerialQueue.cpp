#include "platform/ThreadSerialQueue.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace gf {

namespace {

using Clock = std::chrono::steady_clock;

struct RepeatingTimer {
    std::chrono::microseconds period;
    Clock::time_point deadline;
    std::function<void()> handler;
    std::atomic<bool> active{true};
};

}  // namespace

struct ThreadSerialQueue::Core {
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> tasks;
    std::vector<std::shared_ptr<RepeatingTimer>> timers;
    bool stopping = false;

    void run();
    void remove(const RepeatingTimer* timer) {
        std::erase_if(timers, [timer](const auto& t) { return t.get() == timer; });
    }
    std::shared_ptr<RepeatingTimer> earliestTimer() const {
        auto it = std::min_element(timers.begin(), timers.end(), [](const auto& a, const auto& b) {
            return a->deadline < b->deadline;
        });
        return it == timers.end() ? nullptr : *it;
    }
};

namespace {

// The first deadline after `now` on the timer's grid; missed ticks are skipped.
Clock::time_point nextDeadline(const RepeatingTimer& timer, Clock::time_point now) {
    const auto period = std::max(timer.period, std::chrono::microseconds(1));
    auto next = timer.deadline + period;
    if (next <= now) {
        const auto missed = (now - timer.deadline) / period;
        next = timer.deadline + period * (missed + 1);
    }
    return next;
}

class QueueTimer final : public Timer {
  public:
    QueueTimer(std::weak_ptr<ThreadSerialQueue::Core> core, std::shared_ptr<RepeatingTimer> timer)
        : core_(std::move(core)), timer_(std::move(timer)) {}
    ~QueueTimer() override { cancel(); }

    // Never waits for a tick that is running: the tick holds its own reference
    // to the timer and simply is the last one.
    void cancel() override {
        if (!timer_->active.exchange(false)) {
            return;
        }
        if (auto core = core_.lock()) {
            {
                std::lock_guard lock(core->mutex);
                core->remove(timer_.get());
            }
            core->wake.notify_one();
        }
    }
    bool isActive() const override { return timer_->active; }

  private:
    std::weak_ptr<ThreadSerialQueue::Core> core_;
    std::shared_ptr<RepeatingTimer> timer_;
};

}  // namespace

void ThreadSerialQueue::Core::run() {
    std::unique_lock lock(mutex);
    for (;;) {
        if (!tasks.empty()) {
            auto task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            task();
            task = nullptr;  // whatever the task captured is released off the lock
            lock.lock();
            continue;
        }
        if (stopping) {
            return;
        }
        auto timer = earliestTimer();
        if (!timer) {
            wake.wait(lock);
            continue;
        }
        const auto now = Clock::now();
        if (timer->deadline > now) {
            wake.wait_until(lock, timer->deadline);
            continue;
        }
        timer->deadline = nextDeadline(*timer, now);
        lock.unlock();
        if (timer->active) {
            timer->handler();
        }
        timer.reset();
        lock.lock();
    }
}

ThreadSerialQueue::ThreadSerialQueue(std::string label)
    : label_(std::move(label)), core_(std::make_shared<Core>()) {
    thread_ = std::thread([core = core_] { core->run(); });
    // Thread names are limited to 15 characters; the end of a dotted label says most.
    const std::string name = label_.size() > 15 ? label_.substr(label_.size() - 15) : label_;
    pthread_setname_np(thread_.native_handle(), name.c_str());
}

ThreadSerialQueue::~ThreadSerialQueue() {
    {
        std::lock_guard lock(core_->mutex);
        for (const auto& timer : core_->timers) {
            timer->active = false;
        }
        core_->timers.clear();
        core_->stopping = true;
    }
    core_->wake.notify_one();
    if (thread_.get_id() == std::this_thread::get_id()) {
        // Destroyed by one of its own tasks: the thread finishes the queue on its own.
        thread_.detach();
    } else {
        thread_.join();
    }
}

void ThreadSerialQueue::async(std::function<void()> task) {
    {
        std::lock_guard lock(core_->mutex);
        core_->tasks.push_back(std::move(task));
    }
    core_->wake.notify_one();
}

std::unique_ptr<Timer> ThreadSerialQueue::scheduleRepeating(std::chrono::microseconds period,
                                                            std::chrono::microseconds /*leeway*/,
                                                            std::function<void()> handler) {
    auto timer = std::make_shared<RepeatingTimer>();
    timer->period = period;
    timer->deadline = Clock::now();
    timer->handler = std::move(handler);
    {
        std::lock_guard lock(core_->mutex);
        core_->timers.push_back(timer);
    }
    core_->wake.notify_one();
    return std::make_unique<QueueTimer>(core_, std::move(timer));
}

}  // namespace gf
