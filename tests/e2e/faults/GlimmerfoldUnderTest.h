#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "x11/ChildProcess.h"
#include "x11/X11Desktop.h"

namespace gf::test {

// The real program on a private desktop, started through glimmerfold-test-sandbox: it runs as an
// ordinary user (file permissions hold even when the tests run as root), and what it sees as /tmp,
// where its diagnostic log goes, is privateTmp(). Its settings, runtime directory and output all
// live in the desktop's temporary directory, so nothing of the machine's own is read or written.
class GlimmerfoldUnderTest {
  public:
    explicit GlimmerfoldUnderTest(X11Desktop& desktop);

    // Why the sandbox cannot run on this machine (no user namespaces); nullopt when it can.
    static std::optional<std::string> sandboxUnavailable();

    std::filesystem::path settingsFile() const;
    std::filesystem::path privateTmp() const { return privateTmp_; }
    std::filesystem::path logFile() const { return privateTmp_ / "glimmerfold.log"; }

    // "[General]\nhasCompletedSetup=true\n" followed by these lines, each ended by a newline.
    static std::string settingsWith(const std::vector<std::string>& lines = {});
    void writeSettings(const std::string& contents) const;
    std::string settingsText() const;

    // Added to the program's environment at every launch from now on.
    void setEnvironment(const std::string& name, const std::string& value);
    // A directory the program needs that may lie under the real /tmp, which it does not see.
    void keepVisible(const std::filesystem::path& directory);

    // Starts the program; its standard output and error go to `outputName` in the desktop's
    // directory. nullptr with a test failure when it cannot be started.
    std::unique_ptr<ChildProcess> launch(const std::string& outputName = "glimmerfold.out");
    std::string output(const std::string& outputName = "glimmerfold.out") const;
    std::vector<std::string> outputLines(const std::string& outputName = "glimmerfold.out") const;

    // What the sanitizers reported in the output of every launch so far (the dev preset builds the
    // program with them); empty when nothing. Reports come when a program exits.
    std::string sanitizerReports() const;

    std::vector<std::string> logLines() const;
    // Waits until the log reports `count` event taps created since it was started, which is when
    // a started program reacts to the keys.
    bool waitForEventTaps(std::size_t count,
                          std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

  private:
    X11Desktop& desktop_;
    std::filesystem::path home_;
    std::filesystem::path privateTmp_;
    std::vector<std::pair<std::string, std::string>> environment_;
    std::vector<std::filesystem::path> kept_;
    std::vector<std::string> outputNames_;
};

// The file's whole contents; empty when it cannot be read.
std::string fileText(const std::filesystem::path& path);
std::vector<std::string> linesOf(const std::string& text);

}  // namespace gf::test
