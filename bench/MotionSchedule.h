#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace gf::bench {

// When each motion of a run is sent, counted from the first. Motions come
// evenly at the input rate, in bursts of a quarter of a second; between
// bursts the hand stops for a random part of one 8 ms tick. A rate that
// divides the tick's would otherwise meet it at one fixed phase for the whole
// run, and the run would measure that phase's luck rather than the latency a
// user sees.
std::vector<std::chrono::nanoseconds> motionSchedule(int rateHz, std::size_t count,
                                                     std::uint32_t seed);

inline constexpr std::chrono::milliseconds kBurstLength{250};
inline constexpr std::chrono::milliseconds kLongestPause{8};

}  // namespace gf::bench
