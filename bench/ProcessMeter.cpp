#include "ProcessMeter.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "x11/ChildProcess.h"

namespace gf::bench {

namespace {

using test::fileText;

std::optional<std::uint64_t> leadingNumber(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    const auto [end, error] =
        std::from_chars(text.data() + start, text.data() + text.size(), value);
    if (error != std::errc{} || end == text.data() + start) {
        return std::nullopt;
    }
    return value;
}

}  // namespace

std::optional<std::uint64_t> schedstatRuntime(std::string_view text) {
    return leadingNumber(text);
}

std::optional<std::uint64_t> statusNumber(std::string_view text, std::string_view name) {
    std::size_t lineStart = 0;
    while (lineStart < text.size()) {
        std::size_t lineEnd = text.find('\n', lineStart);
        if (lineEnd == std::string_view::npos) {
            lineEnd = text.size();
        }
        const std::string_view line = text.substr(lineStart, lineEnd - lineStart);
        if (line.size() > name.size() && line.substr(0, name.size()) == name &&
            line[name.size()] == ':') {
            return leadingNumber(line.substr(name.size() + 1));
        }
        lineStart = lineEnd + 1;
    }
    return std::nullopt;
}

ProcessSample sampleProcess(pid_t pid) {
    ProcessSample sample;
    const std::filesystem::path process = std::filesystem::path("/proc") / std::to_string(pid);
    const std::optional<std::uint64_t> resident =
        statusNumber(fileText(process / "status"), "VmRSS");
    if (!resident) {
        return sample;  // gone, or a zombie without memory
    }
    sample.residentKiB = *resident;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(process / "task", error)) {
        ThreadSample thread;
        thread.tid = static_cast<pid_t>(std::stol(entry.path().filename().string()));
        thread.name = fileText(entry.path() / "comm");
        if (!thread.name.empty() && thread.name.back() == '\n') {
            thread.name.pop_back();
        }
        const auto runtime = schedstatRuntime(fileText(entry.path() / "schedstat"));
        const auto switches =
            statusNumber(fileText(entry.path() / "status"), "voluntary_ctxt_switches");
        if (!runtime || !switches) {
            continue;  // the thread ended while being read
        }
        thread.cpuNanoseconds = *runtime;
        thread.voluntarySwitches = *switches;
        sample.threads.push_back(std::move(thread));
    }
    sample.valid = !sample.threads.empty();
    return sample;
}

ProcessUsage usageBetween(const ProcessSample& before, const ProcessSample& after, double seconds) {
    ProcessUsage usage;
    if (!before.valid || !after.valid || seconds <= 0) {
        return usage;
    }
    double cpuNanoseconds = 0;
    double wakeups = 0;
    for (const ThreadSample& thread : after.threads) {
        std::uint64_t cpuBefore = 0;
        std::uint64_t switchesBefore = 0;
        for (const ThreadSample& earlier : before.threads) {
            if (earlier.tid == thread.tid) {
                cpuBefore = earlier.cpuNanoseconds;
                switchesBefore = earlier.voluntarySwitches;
            }
        }
        const double threadWakeups = static_cast<double>(thread.voluntarySwitches - switchesBefore);
        const double threadCpu = static_cast<double>(thread.cpuNanoseconds - cpuBefore);
        cpuNanoseconds += threadCpu;
        wakeups += threadWakeups;
        usage.wakeupsPerSecondByThread[thread.name] += threadWakeups / seconds;
        usage.cpuPercentByThread[thread.name] += 100.0 * threadCpu / (seconds * 1e9);
    }
    usage.cpuPercent = 100.0 * cpuNanoseconds / (seconds * 1e9);
    usage.wakeupsPerSecond = wakeups / seconds;
    return usage;
}

}  // namespace gf::bench
