#include "GlimmerfoldProcess.h"

#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <sstream>

#include "BenchDesktop.h"
#include "PollUntil.h"
#include "TrayIconFinder.h"

namespace gf::bench {

namespace {

using namespace std::chrono_literals;

constexpr auto kStartTimeout = 15s;

std::string settingsText(const GlimmerfoldSettings& settings) {
    std::ostringstream text;
    text << "[General]\n"
         << "hasCompletedSetup=true\n"
         // Snapping would move the window off the pointer's path near other
         // edges, and the latency is measured by finding that path's positions.
         << "magneticsEnabled=false\n"
         << "autoRaiseEnabled=" << (settings.autoRaise ? "true" : "false") << "\n"
         << "autoRaiseDelay=" << settings.autoRaiseDelaySeconds << "\n";
    return text.str();
}

std::string fileText(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

std::unique_ptr<GlimmerfoldProcess> GlimmerfoldProcess::launch(
    BenchDesktop& desktop, const std::filesystem::path& executable,
    const GlimmerfoldSettings& settings, std::string* error) {
    const std::filesystem::path home = desktop.directory() / "glimmerfold-home";
    std::filesystem::create_directories(home / "config/glimmerfold");
    std::filesystem::create_directories(home / "runtime");
    ::chmod((home / "runtime").c_str(), 0700);
    std::ofstream(home / "config/glimmerfold/glimmerfold.conf", std::ios::trunc)
        << settingsText(settings);

    test::ChildProcess::Options options;
    options.arguments = {executable.string()};
    options.environment = desktop.clientEnvironment();
    options.environment.emplace_back("XDG_CONFIG_HOME", (home / "config").string());
    options.environment.emplace_back("XDG_RUNTIME_DIR", (home / "runtime").string());
    options.environment.emplace_back("XDG_CACHE_HOME", (home / "cache").string());
    options.environment.emplace_back("XDG_DATA_HOME", (home / "data").string());
    const std::filesystem::path log = desktop.directory() / "glimmerfold.log";
    options.outputFile = log.string();

    const auto started = std::chrono::steady_clock::now();
    auto process = test::ChildProcess::start(options, error);
    if (!process) {
        return nullptr;
    }
    const bool shown = pollUntil(
        [&] {
            return !process->isRunning() ||
                   findViewableWindowOfClass(desktop.connection(), desktop.trayHostFrame(),
                                             "Glimmerfold")
                       .has_value();
        },
        kStartTimeout, 2ms);
    const std::chrono::duration<double, std::milli> startup =
        std::chrono::steady_clock::now() - started;
    if (!shown || !process->isRunning()) {
        *error = "Glimmerfold showed no tray icon:\n" + fileText(log);
        return nullptr;
    }
    return std::make_unique<GlimmerfoldProcess>(std::move(process), startup.count());
}

}  // namespace gf::bench
