#pragma once

#include <chrono>
#include <functional>

namespace gf::test {

// Polls the condition every `interval` until it holds or the timeout passes, running the Qt
// event loop in between (when there is one) so socket notifiers and timers do their work. True
// when the condition held. A bounded wait, never a fixed sleep. The bench asks more often than
// tests do, to time what it measures closely.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds timeout = std::chrono::milliseconds(5000),
               std::chrono::microseconds interval = std::chrono::milliseconds(5));

// Runs the Qt event loop for the given time; for checking that something does
// NOT happen within a period.
void processEventsFor(std::chrono::milliseconds period);

}  // namespace gf::test
