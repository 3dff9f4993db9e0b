#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace gf::bench {

using Clock = std::chrono::steady_clock;

// A pointer motion as sent (with the frame key it should produce), or a frame
// change as reported (with its key), and when.
struct TimedKey {
    Clock::time_point time;
    std::int64_t key = 0;
};

struct LatencyMatch {
    // For each motion, in order: how long until the frame showed it or a later
    // motion. A window that skips motions (a tick samples only the latest)
    // has caught up with the skipped ones when it shows a later one.
    std::vector<double> latenciesMs;
    std::size_t shownExactly = 0;  // motions whose own position the frame reported
    std::size_t neverShown = 0;    // motions after the last one the frame reached
    std::size_t strayReports = 0;  // frame changes that name no pending motion
};

// Motions carry unique keys. Reports are in arrival order.
LatencyMatch matchMotionsToReports(const std::vector<TimedKey>& motions,
                                   const std::vector<TimedKey>& reports);

struct Distribution {
    std::size_t count = 0;
    double p50 = 0;
    double p95 = 0;
    double p99 = 0;
    double max = 0;
    double mean = 0;
};

// Nearest-rank percentiles: every figure is one of the measured values.
Distribution distributionOf(std::vector<double> values);
double nearestRank(const std::vector<double>& sorted, double fraction);

}  // namespace gf::bench
