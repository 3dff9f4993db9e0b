#pragma once

namespace gf {

// A scheduled timer. Destroying it cancels it. Cancelling never waits for a
// handler that is already running on another thread.
class Timer {
public:
    virtual ~Timer() = default;
    virtual void cancel() = 0;
    virtual bool isActive() const = 0;  // false once cancelled, or once a one-shot has fired
};

}  // namespace gf
