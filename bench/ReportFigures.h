#pragma once

#include <string>
#include <vector>

#include "BenchResults.h"

namespace gf::bench {

// What the tables and the goals both read out of the results, and how they write numbers.
std::string fixed(double value, int decimals);
std::string megabytes(double kib);
// The run of that kind that went without a problem; nullptr when there is none.
const LatencyRun* findRun(const BenchResults& results, const std::string& mover,
                          const std::string& gesture, int rateHz, bool autoRaise);
const IdleRun* findIdle(const BenchResults& results, int rateHz, bool autoRaise);
double median(std::vector<double> values);
// numerator / denominator with two decimals; "-" without a denominator.
std::string ratio(double numerator, double denominator);
// The scenes in which a gesture start was timed at all.
std::vector<const GestureStartRun*> measuredGestureStarts(const BenchResults& results);
// Every motion rate a latency was measured at, in the order measured.
std::vector<int> latencyRates(const BenchResults& results);

}  // namespace gf::bench
