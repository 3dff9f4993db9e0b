#pragma once

#include <chrono>
#include <functional>

namespace gf::test {

// Polls the condition until it holds (true) or the timeout passes, running the Qt event loop in
// between when there is one.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds timeout = std::chrono::milliseconds(5000),
               std::chrono::microseconds interval = std::chrono::milliseconds(5));

// For checking that something does NOT happen within a period.
void processEventsFor(std::chrono::milliseconds period);

}  // namespace gf::test
