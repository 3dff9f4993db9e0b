#pragma once

#include <memory>
#include <string>
#include <thread>

#include "platform/SerialQueue.h"

namespace gf {

// A serial queue backed by one thread of its own. Tasks and timer ticks run one
// at a time, in order. The thread sleeps on a condition variable while nothing
// is due, so an idle queue costs no wake-ups.
class ThreadSerialQueue final : public SerialQueue {
  public:
    explicit ThreadSerialQueue(std::string label);
    // Runs the tasks already submitted, then joins the thread. Timers still
    // scheduled are cancelled.
    ~ThreadSerialQueue() override;
    ThreadSerialQueue(const ThreadSerialQueue&) = delete;
    ThreadSerialQueue& operator=(const ThreadSerialQueue&) = delete;

    void async(std::function<void()> task) override;
    // Ticks at once, then on deadlines spaced exactly one period apart; a tick
    // that could not run in time is skipped, never made up in a burst. The
    // leeway is accepted for the interface; waits end on the deadline itself.
    std::unique_ptr<Timer> scheduleRepeating(std::chrono::microseconds period,
                                             std::chrono::microseconds leeway,
                                             std::function<void()> handler) override;

    const std::string& label() const { return label_; }

    struct Core;

  private:
    std::string label_;
    std::shared_ptr<Core> core_;
    std::thread thread_;
};

}  // namespace gf
