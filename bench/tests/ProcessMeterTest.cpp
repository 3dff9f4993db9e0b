#include <gtest/gtest.h>

#include "ProcessMeter.h"

namespace gf::bench {
namespace {

TEST(ProcessMeterTest, ReadsTheFieldsOfProcFiles) {
    EXPECT_EQ(schedstatRuntime("327277847 899543 24\n"), 327277847u);
    EXPECT_FALSE(schedstatRuntime(""));

    const std::string status =
        "Name:\tglimmerfold\nVmRSS:\t   41236 kB\nThreads:\t4\n"
        "voluntary_ctxt_switches:\t812\nnonvoluntary_ctxt_switches:\t17\n";
    EXPECT_EQ(statusNumber(status, "VmRSS"), 41236u);
    EXPECT_EQ(statusNumber(status, "voluntary_ctxt_switches"), 812u);
    EXPECT_EQ(statusNumber(status, "nonvoluntary_ctxt_switches"), 17u);
    EXPECT_FALSE(statusNumber(status, "VmSwap"));
    EXPECT_FALSE(statusNumber(status, "Name")) << "not a number";
}

TEST(ProcessMeterTest, UsageIsPerSecondAndCountsNewThreadsFromZero) {
    ProcessSample before;
    ProcessSample after;
    before.valid = after.valid = true;
    before.threads = {{1, "glimmerfold", 1'000'000'000, 100}, {2, "glimmerfold.ax", 0, 0}};
    after.threads = {{1, "glimmerfold", 1'020'000'000, 140},
                     {2, "glimmerfold.ax", 10'000'000, 250},
                     {3, "QXcbEventQueue", 10'000'000, 10}};
    const ProcessUsage usage = usageBetween(before, after, 2.0);
    EXPECT_DOUBLE_EQ(usage.cpuPercent, 2.0);  // 40 ms in 2 s
    EXPECT_DOUBLE_EQ(usage.wakeupsPerSecond, 150.0);
    EXPECT_DOUBLE_EQ(usage.wakeupsPerSecondByThread.at("glimmerfold.ax"), 125.0);
    EXPECT_DOUBLE_EQ(usage.wakeupsPerSecondByThread.at("QXcbEventQueue"), 5.0);

    EXPECT_EQ(usageBetween(before, ProcessSample{}, 2.0).cpuPercent, 0.0) << "gone";
}

}  // namespace
}  // namespace gf::bench
