#include "MotionSchedule.h"

#include <random>

namespace gf::bench {

std::vector<std::chrono::nanoseconds> motionSchedule(int rateHz, std::size_t count,
                                                     std::uint32_t seed) {
    std::vector<std::chrono::nanoseconds> schedule;
    if (rateHz <= 0) {
        return schedule;
    }
    schedule.reserve(count);
    const std::chrono::nanoseconds period(1'000'000'000LL / rateHz);
    const auto perBurst = std::max<std::size_t>(1, static_cast<std::size_t>(kBurstLength / period));
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::int64_t> pause(
        0, std::chrono::nanoseconds(kLongestPause).count() - 1);
    std::chrono::nanoseconds next{0};
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0 && i % perBurst == 0) {
            next += std::chrono::nanoseconds(pause(random));
        }
        schedule.push_back(next);
        next += period;
    }
    return schedule;
}

}  // namespace gf::bench
