#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gf::bench {

struct ThreadSample {
    pid_t tid = 0;
    std::string name;
    std::uint64_t cpuNanoseconds = 0;
    std::uint64_t voluntarySwitches = 0;
};

// A process's threads as /proc shows them at one moment. CPU time comes from
// schedstat (nanoseconds) rather than stat (10 ms ticks), which could not
// tell 0.1 % of a core from nothing over a few seconds.
struct ProcessSample {
    bool valid = false;
    std::uint64_t residentKiB = 0;
    std::vector<ThreadSample> threads;
};

ProcessSample sampleProcess(pid_t pid);

// What a process used between two samples, per second of the interval.
// Threads started in between count from zero; a thread that ended in
// between is lost with what it used (the processes measured keep theirs).
struct ProcessUsage {
    double cpuPercent = 0;                                   // of one core
    double wakeupsPerSecond = 0;                             // voluntary context switches
    std::map<std::string, double> wakeupsPerSecondByThread;  // by thread name
    std::map<std::string, double> cpuPercentByThread;
};

ProcessUsage usageBetween(const ProcessSample& before, const ProcessSample& after, double seconds);

// Parsers for the /proc files, exposed for testing.
std::optional<std::uint64_t> schedstatRuntime(std::string_view text);
// A "Name:\tvalue ..." line of /proc/<pid>/status, as a number.
std::optional<std::uint64_t> statusNumber(std::string_view text, std::string_view name);

}  // namespace gf::bench
