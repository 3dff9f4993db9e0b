#include "GlimmerfoldUnderTest.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "x11/WaitUntil.h"

namespace gf::test {

namespace {

constexpr const char* kEventTapCreated = "[EventTap] Created and enabled successfully.";

}  // namespace

std::string fileText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

GlimmerfoldUnderTest::GlimmerfoldUnderTest(X11Desktop& desktop)
    : desktop_(desktop),
      home_(desktop.directory() / "home"),
      privateTmp_(desktop.directory() / "tmp"),
      kept_{desktop.directory(), std::filesystem::path(GLIMMERFOLD_EXECUTABLE).parent_path()} {
    std::filesystem::create_directories(home_ / "config/glimmerfold");
    std::filesystem::create_directories(home_ / "runtime");
    std::filesystem::create_directories(privateTmp_);
    ::chmod((home_ / "runtime").c_str(), 0700);
    ::chmod(privateTmp_.c_str(), 01777);
    // Only read by a program built with the sanitizers (the dev preset): leaks inside system
    // libraries are not reported, and undefined behaviour stops the program at once.
    const std::filesystem::path suppressions(GLIMMERFOLD_LSAN_SUPPRESSIONS);
    setEnvironment("LSAN_OPTIONS", "print_suppressions=0:suppressions=" + suppressions.string());
    setEnvironment("UBSAN_OPTIONS", "print_stacktrace=1:halt_on_error=1");
    keepVisible(suppressions.parent_path());
}

std::optional<std::string> GlimmerfoldUnderTest::sandboxUnavailable() {
    static const std::optional<std::string> reason = []() -> std::optional<std::string> {
        const std::filesystem::path directory =
            std::filesystem::temp_directory_path() /
            ("glimmerfold-sandbox-check-" + std::to_string(::getpid()));
        std::filesystem::create_directories(directory);
        ChildProcess::Options options;
        options.arguments = {GLIMMERFOLD_SANDBOX, "--tmp", directory.string(), "--", "true"};
        options.outputFile = (directory.string() + ".out");
        std::string error;
        auto check = ChildProcess::start(options, &error);
        std::optional<int> status =
            check ? check->waitForExit(std::chrono::seconds(10)) : std::nullopt;
        const std::string said = fileText(options.outputFile);
        std::filesystem::remove_all(directory);
        std::filesystem::remove(options.outputFile);
        if (status == 0) {
            return std::nullopt;
        }
        return "the test sandbox cannot run here: " + (check ? said : error);
    }();
    return reason;
}

std::filesystem::path GlimmerfoldUnderTest::settingsFile() const {
    return home_ / "config/glimmerfold/glimmerfold.conf";
}

std::string GlimmerfoldUnderTest::settingsWith(const std::vector<std::string>& lines) {
    std::string text = "[General]\nhasCompletedSetup=true\n";
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

void GlimmerfoldUnderTest::writeSettings(const std::string& contents) const {
    std::ofstream(settingsFile(), std::ios::binary | std::ios::trunc) << contents;
}

std::string GlimmerfoldUnderTest::settingsText() const {
    return fileText(settingsFile());
}

void GlimmerfoldUnderTest::setEnvironment(const std::string& name, const std::string& value) {
    environment_.emplace_back(name, value);
}

void GlimmerfoldUnderTest::keepVisible(const std::filesystem::path& directory) {
    kept_.push_back(directory);
}

std::unique_ptr<ChildProcess> GlimmerfoldUnderTest::launch(const std::string& outputName) {
    ChildProcess::Options options;
    options.arguments = {GLIMMERFOLD_SANDBOX, "--tmp", privateTmp_.string()};
    for (const std::filesystem::path& directory : kept_) {
        // Only what lies under /tmp would be hidden.
        if (directory.string().rfind("/tmp/", 0) == 0) {
            options.arguments.insert(options.arguments.end(), {"--keep", directory.string()});
        }
    }
    options.arguments.insert(options.arguments.end(), {"--", GLIMMERFOLD_EXECUTABLE});
    options.environment = desktop_.clientEnvironment();
    options.environment.emplace_back("XDG_CONFIG_HOME", (home_ / "config").string());
    options.environment.emplace_back("XDG_RUNTIME_DIR", (home_ / "runtime").string());
    options.environment.emplace_back("XDG_CACHE_HOME", (home_ / "cache").string());
    options.environment.emplace_back("XDG_DATA_HOME", (home_ / "data").string());
    options.environment.emplace_back("HOME", home_.string());
    options.environment.insert(options.environment.end(), environment_.begin(), environment_.end());
    options.outputFile = (desktop_.directory() / outputName).string();
    outputNames_.push_back(outputName);
    std::string error;
    auto process = ChildProcess::start(options, &error);
    EXPECT_NE(process, nullptr) << error;
    return process;
}

std::string GlimmerfoldUnderTest::output(const std::string& outputName) const {
    return fileText(desktop_.directory() / outputName);
}

std::vector<std::string> GlimmerfoldUnderTest::outputLines(const std::string& outputName) const {
    return linesOf(output(outputName));
}

std::string GlimmerfoldUnderTest::sanitizerReports() const {
    std::string reports;
    for (const std::string& name : outputNames_) {
        const std::string text = output(name);
        for (const char* mark : {"Sanitizer", "runtime error:"}) {
            if (text.find(mark) != std::string::npos) {
                reports += name + ":\n" + text;
                break;
            }
        }
    }
    return reports;
}

std::vector<std::string> GlimmerfoldUnderTest::logLines() const {
    return linesOf(fileText(logFile()));
}

bool GlimmerfoldUnderTest::waitForEventTaps(std::size_t count,
                                            std::chrono::milliseconds timeout) const {
    return waitUntil(
        [&] {
            const std::vector<std::string> lines = logLines();
            return static_cast<std::size_t>(
                       std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
                           return line.find(kEventTapCreated) != std::string::npos;
                       })) >= count;
        },
        timeout);
}

}  // namespace gf::test
