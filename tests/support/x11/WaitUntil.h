#pragma once

#include <chrono>
#include <functional>

namespace gf::test {

// Polls until the condition holds (true) or time runs out, running any Qt event loop in between.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds timeout = std::chrono::milliseconds(5000),
               std::chrono::microseconds interval = std::chrono::milliseconds(5));

// For checking that something does NOT happen within a period.
void processEventsFor(std::chrono::microseconds period);

}  // namespace gf::test
