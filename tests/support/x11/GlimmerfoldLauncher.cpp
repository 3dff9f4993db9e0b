#include "x11/GlimmerfoldLauncher.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "x11/WaitUntil.h"
#include "x11/X11Desktop.h"

namespace gf::test {

namespace {

constexpr const char* kEventTapCreated = "[EventTap] Created and enabled successfully.";

}  // namespace

GlimmerfoldLauncher::GlimmerfoldLauncher(X11Desktop& desktop, Options options)
    : desktop_(desktop),
      options_(std::move(options)),
      home_(desktop.directory() / "home"),
      privateTmp_(desktop.directory() / "tmp"),
      kept_{desktop.directory(), std::filesystem::path(executable()).parent_path()} {
    if (options_.program.empty()) {
        options_.program = executable();
    }
    std::filesystem::create_directories(home_ / "config/glimmerfold");
    std::filesystem::create_directories(runtimeDirectory());
    std::filesystem::create_directories(privateTmp_);
    ::chmod(runtimeDirectory().c_str(), 0700);
    ::chmod(privateTmp_.c_str(), 01777);
    writeSettings(settingsWith(options_.settings));
    // For the dev preset's sanitizers: no leaks of system libraries, stop at undefined behaviour.
    const std::filesystem::path suppressions(GLIMMERFOLD_LSAN_SUPPRESSIONS);
    setEnvironment("LSAN_OPTIONS", "print_suppressions=0:suppressions=" + suppressions.string());
    setEnvironment("UBSAN_OPTIONS", "print_stacktrace=1:halt_on_error=1");
    kept_.push_back(suppressions.parent_path());
}

std::string GlimmerfoldLauncher::executable() {
    return GLIMMERFOLD_EXECUTABLE;
}

bool GlimmerfoldLauncher::sandboxWorks() {
    // Asked once per test program; the sandbox says in the test's output why it cannot run.
    static const bool works = std::system("'" GLIMMERFOLD_SANDBOX "' /tmp -- true") == 0;
    return works;
}

std::string GlimmerfoldLauncher::settingsWith(const std::vector<std::string>& lines) {
    std::string text = "[General]\nhasCompletedSetup=true\n";
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

std::unique_ptr<ChildProcess> GlimmerfoldLauncher::launch(
    const std::string& outputName, const std::vector<std::string>& arguments) {
    ChildProcess::Options options;
    if (options_.sandboxed) {
        options.arguments = {GLIMMERFOLD_SANDBOX, privateTmp_.string()};
        options.arguments.insert(options.arguments.end(), kept_.begin(), kept_.end());
        options.arguments.emplace_back("--");
    }
    options.arguments.push_back(options_.program);
    options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
    options.environment = desktop_.clientEnvironment();
    options.environment.insert(options.environment.end(),
                               {{"XDG_CONFIG_HOME", (home_ / "config").string()},
                                {"XDG_RUNTIME_DIR", runtimeDirectory().string()},
                                {"XDG_CACHE_HOME", (home_ / "cache").string()},
                                {"XDG_DATA_HOME", (home_ / "data").string()}});
    if (options_.sandboxed) {
        options.environment.emplace_back("HOME", home_.string());
    }
    options.environment.insert(options.environment.end(), environment_.begin(), environment_.end());
    options.outputFile = (desktop_.directory() / outputName).string();
    outputNames_.push_back(outputName);
    return ChildProcess::start(options, &error_);
}

std::string GlimmerfoldLauncher::sanitizerReports() const {
    std::string reports;
    for (const std::string& name : outputNames_) {
        const std::string text = output(name);
        if (text.find("Sanitizer") != std::string::npos ||
            text.find("runtime error:") != std::string::npos) {
            reports += name + ":\n" + text;
        }
    }
    return reports;
}

std::size_t GlimmerfoldLauncher::eventTapsLogged() const {
    return static_cast<std::size_t>(std::ranges::count_if(logLines(), [](const auto& line) {
        return line.find(kEventTapCreated) != std::string::npos;
    }));
}

bool GlimmerfoldLauncher::waitForEventTaps(std::size_t count,
                                           std::chrono::milliseconds timeout) const {
    return waitUntil([&] { return eventTapsLogged() >= count; }, timeout);
}

}  // namespace gf::test
