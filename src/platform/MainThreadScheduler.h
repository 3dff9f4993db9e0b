#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/Timer.h"

namespace gf {

// Timers that fire on the main thread, between events.
class MainThreadScheduler {
public:
    virtual ~MainThreadScheduler() = default;

    // Fires after each period, the first one period from now.
    virtual std::unique_ptr<Timer> scheduleRepeating(std::chrono::milliseconds period,
                                                     std::function<void()> handler) = 0;
    // Fires once, after the delay.
    virtual std::unique_ptr<Timer> scheduleOnce(std::chrono::milliseconds delay,
                                                std::function<void()> handler) = 0;
};

}  // namespace gf
