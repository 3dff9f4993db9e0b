#include "LatencyMatch.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_map>

namespace gf::bench {

LatencyMatch matchMotionsToReports(const std::vector<TimedKey>& motions,
                                   const std::vector<TimedKey>& reports) {
    std::unordered_map<std::int64_t, std::size_t> indexOfKey;
    indexOfKey.reserve(motions.size());
    for (std::size_t i = 0; i < motions.size(); ++i) {
        indexOfKey.emplace(motions[i].key, i);
    }
    LatencyMatch match;
    match.latenciesMs.reserve(motions.size());
    std::size_t firstPending = 0;
    for (const TimedKey& report : reports) {
        const auto found = indexOfKey.find(report.key);
        // A key of a motion already caught up with is the window repeating
        // itself; one not sent yet cannot be the answer to anything.
        if (found == indexOfKey.end() || found->second < firstPending ||
            motions[found->second].time > report.time) {
            ++match.strayReports;
            continue;
        }
        for (std::size_t i = firstPending; i <= found->second; ++i) {
            const std::chrono::duration<double, std::milli> latency = report.time - motions[i].time;
            match.latenciesMs.push_back(latency.count());
        }
        ++match.shownExactly;
        firstPending = found->second + 1;
    }
    match.neverShown = motions.size() - firstPending;
    return match;
}

double nearestRank(const std::vector<double>& sorted, double fraction) {
    if (sorted.empty()) {
        return 0;
    }
    const auto rank =
        static_cast<std::size_t>(std::ceil(fraction * static_cast<double>(sorted.size())));
    return sorted[std::clamp<std::size_t>(rank, 1, sorted.size()) - 1];
}

Distribution distributionOf(std::vector<double> values) {
    Distribution distribution;
    if (values.empty()) {
        return distribution;
    }
    std::sort(values.begin(), values.end());
    distribution.count = values.size();
    distribution.p50 = nearestRank(values, 0.50);
    distribution.p95 = nearestRank(values, 0.95);
    distribution.p99 = nearestRank(values, 0.99);
    distribution.max = values.back();
    distribution.mean =
        std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
    return distribution;
}

}  // namespace gf::bench
