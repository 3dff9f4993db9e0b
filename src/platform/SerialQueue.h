#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/Timer.h"

namespace gf {

// A background queue that runs one task at a time, in the order submitted.
// Destroying the queue runs the tasks already submitted, then stops.
class SerialQueue {
public:
    virtual ~SerialQueue() = default;

    virtual void async(std::function<void()> task) = 0;

    // A repeating timer on this queue: the first tick at once, then one every
    // period, each allowed to be late by up to the leeway. While no timer is
    // scheduled and no task is pending the queue does no work at all.
    virtual std::unique_ptr<Timer> scheduleRepeating(std::chrono::microseconds period,
                                                     std::chrono::microseconds leeway,
                                                     std::function<void()> handler) = 0;
};

class SerialQueueFactory {
public:
    virtual ~SerialQueueFactory() = default;
    virtual std::unique_ptr<SerialQueue> createSerialQueue(const char* label) = 0;
};

}  // namespace gf
