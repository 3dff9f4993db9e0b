#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "x11/ChildProcess.h"

namespace gf::test {

class X11Desktop;

// The real program on a private desktop as a user meets it: a home of its own in the desktop's
// directory (settings with setup completed, runtime directory, caches), so nothing of the
// machine's own is read or written, and its output in a file there. Sandboxed, it is started
// through glimmerfold-test-sandbox: it runs as an ordinary user (file permissions hold even when
// the tests run as root), and what it sees as /tmp, where its diagnostic log goes, is
// privateTmp().
class GlimmerfoldLauncher {
  public:
    struct Options {
        bool sandboxed = false;
        // The program, or a script that execs it; the build's own by default.
        std::string program;
        // Settings lines after those of a completed setup.
        std::vector<std::string> settings;
    };

    GlimmerfoldLauncher(X11Desktop& desktop, Options options);
    explicit GlimmerfoldLauncher(X11Desktop& desktop) : GlimmerfoldLauncher(desktop, Options{}) {}

    // Why the sandbox cannot run on this machine (no user namespaces); nullopt when it can.
    static std::optional<std::string> sandboxUnavailable();
    static std::string executable();

    std::filesystem::path settingsFile() const;
    std::filesystem::path runtimeDirectory() const { return home_ / "runtime"; }
    std::filesystem::path privateTmp() const { return privateTmp_; }
    std::filesystem::path logFile() const { return privateTmp_ / "glimmerfold.log"; }

    // "[General]\nhasCompletedSetup=true\n" followed by these lines, each ended by a newline.
    static std::string settingsWith(const std::vector<std::string>& lines = {});
    void writeSettings(const std::string& contents) const;
    std::string settingsText() const;

    // Added to the program's environment at every launch from now on.
    void setEnvironment(const std::string& name, const std::string& value);
    // A directory the sandboxed program needs that may lie under the real /tmp, which it does
    // not see.
    void keepVisible(const std::filesystem::path& directory);

    // Starts the program with `arguments`; its standard output and error go to `outputName` (in
    // the desktop's directory unless absolute). nullptr with the reason in error() when it
    // cannot be started.
    std::unique_ptr<ChildProcess> launch(const std::string& outputName = "glimmerfold.out",
                                         const std::vector<std::string>& arguments = {});
    const std::string& error() const { return error_; }
    std::string output(const std::string& outputName = "glimmerfold.out") const;
    std::vector<std::string> outputLines(const std::string& outputName = "glimmerfold.out") const;

    // What the sanitizers reported in the output of every launch so far (the dev preset builds the
    // program with them); empty when nothing. Reports come when a program exits.
    std::string sanitizerReports() const;

    // The sandboxed program's diagnostic log.
    std::vector<std::string> logLines() const;
    std::size_t eventTapsLogged() const;
    // Waits until the log reports `count` event taps created since it was started, which is when
    // a started program reacts to the keys.
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

// The file's whole contents; empty when it cannot be read.
std::string fileText(const std::filesystem::path& path);
std::vector<std::string> linesOf(const std::string& text);

}  // namespace gf::test
