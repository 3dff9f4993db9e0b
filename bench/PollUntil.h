#pragma once

#include <chrono>
#include <functional>

namespace gf::bench {

// Checks the condition every `interval` until it holds (true) or the timeout
// passes (false). Conditions here ask the X server or /proc, so the interval
// keeps the asking from loading the machine being measured.
bool pollUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout,
               std::chrono::microseconds interval = std::chrono::milliseconds(2));

}  // namespace gf::bench
