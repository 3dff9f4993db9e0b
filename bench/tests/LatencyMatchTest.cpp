#include <gtest/gtest.h>

#include <numeric>
#include <set>
#include <tuple>
#include <utility>

#include "LatencyMatch.h"
#include "MotionPath.h"
#include "MotionSchedule.h"

namespace gf::bench {
namespace {

using namespace std::chrono_literals;

const Clock::time_point t0{};

TimedKey at(std::chrono::microseconds time, std::int64_t key) {
    return {t0 + time, key};
}

TEST(LatencyMatchTest, SkippedMotionsCountUntilTheFrameShowsALaterOne) {
    // Motions every 2 ms; the frame shows every fourth, 3 ms after it was sent.
    std::vector<TimedKey> motions;
    std::vector<TimedKey> reports;
    for (int i = 0; i < 8; ++i) {
        motions.push_back(at(i * 2000us, i));
        if (i % 4 == 3) {
            reports.push_back(at(i * 2000us + 3000us, i));
        }
    }
    const LatencyMatch match = matchMotionsToReports(motions, reports);
    EXPECT_EQ(match.latenciesMs, (std::vector<double>{9, 7, 5, 3, 9, 7, 5, 3}));
    EXPECT_EQ(match.shownExactly, 2u);
    EXPECT_EQ(match.neverShown, 0u);
    EXPECT_EQ(match.strayReports, 0u);
}

TEST(LatencyMatchTest, RepeatsUnknownPositionsAndAnswersFromBeforeTheMotionAreStray) {
    const std::vector<TimedKey> motions{at(0us, 10), at(1000us, 11), at(2000us, 12),
                                        at(3000us, 13)};
    const std::vector<TimedKey> reports{
        at(500us, 10),   // the first motion, shown
        at(600us, 10),   // shown again (a restack reports the same place)
        at(700us, 99),   // a place no motion asked for
        at(1500us, 12),  // a motion not sent yet cannot be its cause
        at(2500us, 12),  // now it can
    };
    const LatencyMatch match = matchMotionsToReports(motions, reports);
    EXPECT_EQ(match.latenciesMs, (std::vector<double>{0.5, 1.5, 0.5}));
    EXPECT_EQ(match.shownExactly, 2u);
    EXPECT_EQ(match.strayReports, 3u);
    EXPECT_EQ(match.neverShown, 1u) << "the last motion was never reached";
}

TEST(LatencyMatchTest, NearestRankPercentilesAreMeasuredValues) {
    std::vector<double> values(100);
    std::iota(values.rbegin(), values.rend(), 1.0);  // 100 down to 1
    const Distribution d = distributionOf(values);
    EXPECT_EQ(std::tuple(d.count, d.p50, d.p95, d.p99, d.max), std::tuple(100u, 50, 95, 99, 100));
    EXPECT_DOUBLE_EQ(d.mean, 50.5);

    const Distribution three = distributionOf({3, 1, 2});
    EXPECT_EQ(std::pair(three.p50, three.p99), std::pair(2.0, 3.0));
    EXPECT_EQ(distributionOf({}).count, 0u);
}

TEST(MotionPathTest, EveryMotionHasItsOwnPlaceOnePixelFromTheLast) {
    const MotionPath path(50);
    std::set<std::pair<int, int>> seen;
    PixelOffset previous{0, 0};
    for (std::size_t i = 0; i < 3000; ++i) {
        const PixelOffset p = path.at(i);
        EXPECT_TRUE(seen.emplace(p.dx, p.dy).second) << "motion " << i << " repeats a place";
        EXPECT_LE(std::abs(p.dx - previous.dx) + std::abs(p.dy - previous.dy), 1) << i;
        EXPECT_TRUE(p.dx >= 1 && p.dx <= 50) << p.dx;
        previous = p;
    }
    EXPECT_EQ(path.extent(3000), (PixelOffset{50, 59}));
    EXPECT_EQ(path.extent(10), (PixelOffset{10, 0}));
    EXPECT_NE(pairKey(1, 2), pairKey(2, 1));
    EXPECT_NE(pairKey(-1, 0), pairKey(0, -1));
}

TEST(MotionScheduleTest, BurstsAtTheRateWithPausesShorterThanATick) {
    const auto schedule = motionSchedule(1000, 3000, 1);
    ASSERT_EQ(schedule.size(), 3000u);
    EXPECT_EQ(schedule.front().count(), 0);
    std::set<std::int64_t> pauses;
    for (std::size_t i = 1; i < schedule.size(); ++i) {
        const auto gap = schedule[i] - schedule[i - 1];
        if (i % 250 != 0) {
            EXPECT_EQ(gap, std::chrono::milliseconds(1)) << i;
        } else {
            EXPECT_GE(gap, std::chrono::milliseconds(1)) << i;
            EXPECT_LT(gap, std::chrono::milliseconds(1) + kLongestPause) << i;
            pauses.insert(gap.count());
        }
    }
    EXPECT_GT(pauses.size(), 5u)
        << "the pauses differ, so the bursts meet the tick at other phases";
    EXPECT_EQ(motionSchedule(1000, 3000, 1), schedule) << "the same seed, the same run";
    EXPECT_EQ(motionSchedule(250, 2, 1)[1], std::chrono::milliseconds(4));
}

}  // namespace
}  // namespace gf::bench
