#include "PollUntil.h"

#include <thread>

namespace gf::bench {

bool pollUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout,
               std::chrono::microseconds interval) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        if (condition()) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(interval);
    }
}

}  // namespace gf::bench
