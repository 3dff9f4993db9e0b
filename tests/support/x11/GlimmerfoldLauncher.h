#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "x11/ChildProcess.h"
#include "x11/X11Desktop.h"

namespace gf::test {

// The real program with a home in the desktop's directory, so nothing of the machine's is touched;
// sandboxed, as an ordinary user (permissions hold even for root) with a /tmp of its own.
class GlimmerfoldLauncher {
  public:
    struct Options {
        bool sandboxed = false;
        std::string program;                // or a script that execs it; the build's by default
        std::vector<std::string> settings;  // lines after those of a completed setup
    };

    GlimmerfoldLauncher(X11Desktop& desktop, Options options);
    explicit GlimmerfoldLauncher(X11Desktop& desktop) : GlimmerfoldLauncher(desktop, Options{}) {}

    static bool sandboxWorks();
    static std::string executable();

    std::filesystem::path settingsFile() const {
        return home_ / "config/glimmerfold/glimmerfold.conf";
    }
    std::filesystem::path runtimeDirectory() const { return home_ / "runtime"; }
    std::filesystem::path logFile() const { return privateTmp_ / "glimmerfold.log"; }

    static std::string settingsWith(const std::vector<std::string>& lines = {});
    void writeSettings(const std::string& contents) const {
        std::ofstream(settingsFile(), std::ios::binary | std::ios::trunc) << contents;
    }
    std::string settingsText() const { return fileText(settingsFile()); }

    // Added to the program's environment at every later launch.
    void setEnvironment(const std::string& name, const std::string& value) {
        environment_.emplace_back(name, value);
    }

    // Its output goes to `outputName` in the desktop's directory; nullptr with error() if it fails.
    std::unique_ptr<ChildProcess> launch(const std::string& outputName = "glimmerfold.out",
                                         const std::vector<std::string>& arguments = {});
    const std::string& error() const { return error_; }
    std::string output(const std::string& outputName = "glimmerfold.out") const {
        return fileText(desktop_.directory() / outputName);
    }
    std::vector<std::string> outputLines(const std::string& outputName = "glimmerfold.out") const {
        return linesOf(desktop_.directory() / outputName);
    }

    std::string sanitizerReports() const;  // from every launch's output so far

    // The sandboxed program's diagnostic log.
    std::vector<std::string> logLines() const { return linesOf(logFile()); }
    std::size_t eventTapsLogged() const;
    // Until the log reports `count` event taps, which is when a program reacts to the keys.
    bool waitForEventTaps(std::size_t count,
                          std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

  private:
    X11Desktop& desktop_;
    Options options_;
    std::filesystem::path home_;
    std::filesystem::path privateTmp_;
    std::vector<std::pair<std::string, std::string>> environment_;
    std::vector<std::filesystem::path> kept_;
    std::vector<std::string> outputNames_;
    std::string error_;
};

}  // namespace gf::test
