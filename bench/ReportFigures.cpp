#include "ReportFigures.h"

#include <algorithm>
#include <cstdio>

namespace gf::bench {

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string megabytes(double kib) {
    return fixed(kib / 1024.0, 1) + " MB";
}

const LatencyRun* findRun(const BenchResults& results, const std::string& mover,
                          const std::string& gesture, int rateHz, bool autoRaise) {
    for (const LatencyRun& run : results.latencyRuns) {
        if (run.mover == mover && run.gesture == gesture && run.rateHz == rateHz &&
            run.autoRaise == autoRaise && run.problem.empty()) {
            return &run;
        }
    }
    return nullptr;
}

const IdleRun* findIdle(const BenchResults& results, int rateHz, bool autoRaise) {
    for (const IdleRun& run : results.idleRuns) {
        if (run.rateHz == rateHz && run.autoRaise == autoRaise) {
            return &run;
        }
    }
    return nullptr;
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[(values.size() - 1) / 2];
}

std::string ratio(double numerator, double denominator) {
    return denominator > 0 ? fixed(numerator / denominator, 2) : "-";
}

std::vector<const GestureStartRun*> measuredGestureStarts(const BenchResults& results) {
    std::vector<const GestureStartRun*> runs;
    for (const GestureStartRun& run : results.gestureStarts) {
        if (run.trials > 0) {
            runs.push_back(&run);
        }
    }
    std::sort(runs.begin(), runs.end(),
              [](const auto* a, const auto* b) { return a->windows < b->windows; });
    return runs;
}

std::vector<int> latencyRates(const BenchResults& results) {
    std::vector<int> rates;
    for (const LatencyRun& run : results.latencyRuns) {
        if (std::find(rates.begin(), rates.end(), run.rateHz) == rates.end()) {
            rates.push_back(run.rateHz);
        }
    }
    return rates;
}

}  // namespace gf::bench
