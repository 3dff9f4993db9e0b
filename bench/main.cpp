// Measures how closely a window follows the pointer under Glimmerfold and
// under openbox's own move and resize, and what that costs, on a private X
// server. `make bench` runs it; see docs/performance.md.

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Bench.h"
#include "Report.h"

namespace {

struct Arguments {
    std::filesystem::path glimmerfold = GLIMMERFOLD_EXECUTABLE;
    std::filesystem::path output = "bench-results";
    gf::bench::BenchPlan plan = gf::bench::BenchPlan::full();
};

void printUsage() {
    std::cerr << "usage: glimmerfold_bench [--smoke] [--output DIR] [--glimmerfold PATH]\n"
                 "                         [--only PARTS] [--rates HZ,...] [--seconds S]\n"
                 "  --smoke    a few seconds of each part, to prove that the bench still works\n"
                 "  --only     some of idle,memory,latency,start,autoraise (start-up always runs)\n"
                 "  --rates    input rates of the latency runs (default 250,500,1000)\n"
                 "  --seconds  length of each latency run (default 3)\n"
                 "  --raw      every motion's latency in results.json\n";
}

std::vector<std::string> commaList(const std::string& text) {
    std::vector<std::string> items;
    std::istringstream stream(text);
    for (std::string item; std::getline(stream, item, ',');) {
        items.push_back(item);
    }
    return items;
}

bool selectParts(const std::string& list, gf::bench::BenchPlan& plan) {
    plan.withIdle = plan.withMemory = plan.withLatency = plan.withGestureStart =
        plan.withAutoRaise = false;
    for (const std::string& part : commaList(list)) {
        if (part == "idle") {
            plan.withIdle = true;
        } else if (part == "memory") {
            plan.withMemory = true;
        } else if (part == "latency") {
            plan.withLatency = true;
        } else if (part == "start") {
            plan.withGestureStart = true;
        } else if (part == "autoraise") {
            plan.withAutoRaise = true;
        } else {
            return false;
        }
    }
    return true;
}

bool parse(int argc, char** argv, Arguments& arguments) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool hasValue = i + 1 < argc;
        if (argument == "--smoke") {
            arguments.plan = gf::bench::BenchPlan::smokeTest();
        } else if (argument == "--raw") {
            arguments.plan.keepRawLatencies = true;
        } else if (argument == "--output" && hasValue) {
            arguments.output = argv[++i];
        } else if (argument == "--glimmerfold" && hasValue) {
            arguments.glimmerfold = argv[++i];
        } else if (argument == "--only" && hasValue) {
            if (!selectParts(argv[++i], arguments.plan)) {
                return false;
            }
        } else if (argument == "--rates" && hasValue) {
            arguments.plan.ratesHz.clear();
            for (const std::string& rate : commaList(argv[++i])) {
                arguments.plan.ratesHz.push_back(std::atoi(rate.c_str()));
                if (arguments.plan.ratesHz.back() <= 0) {
                    return false;
                }
            }
        } else if (argument == "--seconds" && hasValue) {
            arguments.plan.latencySeconds = std::atof(argv[++i]);
            if (arguments.plan.latencySeconds <= 0) {
                return false;
            }
        } else {
            return false;
        }
    }
    return true;
}

std::string utcNow() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &utc);
    return text;
}

std::string firstLineStartingWith(const std::filesystem::path& file, const std::string& prefix) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind(prefix, 0) == 0) {
            return line;
        }
    }
    return {};
}

std::string oneMinuteLoad() {
    std::string load;
    std::getline(std::ifstream("/proc/loadavg"), load);
    std::istringstream fields(load);
    std::string oneMinute;
    fields >> oneMinute;
    return oneMinute;
}

// The numbers depend on the machine and on what else it is doing.
std::string machineDescription() {
    std::string model = firstLineStartingWith("/proc/cpuinfo", "model name");
    if (const std::size_t colon = model.find(": "); colon != std::string::npos) {
        model = model.substr(colon + 2);
    }
    return (model.empty() ? std::string("unknown CPU") : model) + ", " +
           std::to_string(std::thread::hardware_concurrency()) + " cores";
}

// A smoke run proves that every part produced numbers, not that they are good.
bool smokeRunWorked(const gf::bench::BenchResults& results) {
    bool glimmerfoldMeasured = false;
    bool openboxMeasured = false;
    for (const auto& run : results.latencyRuns) {
        const bool measured = run.problem.empty() && run.latency.count > 0;
        glimmerfoldMeasured = glimmerfoldMeasured || (measured && run.mover == "Glimmerfold");
        openboxMeasured = openboxMeasured || (measured && run.mover == "openbox");
    }
    const bool gestureStartMeasured =
        !results.gestureStarts.empty() && results.gestureStarts.front().trials > 0;
    const bool autoRaiseMeasured =
        !results.autoRaiseDelays.empty() && results.autoRaiseDelays.front().crossings > 0;
    const auto& memory = results.memory;
    return !results.startupMs.empty() && glimmerfoldMeasured && openboxMeasured &&
           gestureStartMeasured && autoRaiseMeasured && memory.startupKiB > 0 &&
           memory.gesturesTaken * 10 >= memory.gesturesTried * 9 && !results.idleRuns.empty() &&
           results.problems.empty();
}

}  // namespace

int main(int argc, char** argv) {
    Arguments arguments;
    if (!parse(argc, argv, arguments)) {
        printUsage();
        return 2;
    }
    gf::bench::BenchResults results;
    try {
        std::string error;
        auto desktop = gf::test::X11Desktop::start(gf::bench::BenchStage::desktopOptions(), &error);
        if (!desktop) {
            std::cerr << "glimmerfold_bench: " << error << "\n";
            return 1;
        }
        const std::string started = utcNow();
        const std::string loadAtStart = oneMinuteLoad();
        gf::bench::Bench bench(*desktop, arguments.glimmerfold, arguments.plan);
        results = bench.run();
        results.started = started;
        results.machine = machineDescription() + ", load average " + loadAtStart +
                          " at the start and " + oneMinuteLoad() + " at the end";
    } catch (const std::exception& failure) {
        std::cerr << "glimmerfold_bench: " << failure.what() << "\n";
        return 1;
    }
    const std::string markdown = gf::bench::markdownReport(results);
    std::filesystem::create_directories(arguments.output);
    std::ofstream(arguments.output / "results.md") << markdown;
    std::ofstream(arguments.output / "results.json") << gf::bench::jsonReport(results);
    std::cout << markdown << "Written to " << (arguments.output / "results.md").string()
              << " and results.json\n";
    if (arguments.plan.smoke) {
        return smokeRunWorked(results) ? 0 : 1;
    }
    return results.problems.empty() ? 0 : 1;
}
