#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <string>

#include "x11/ChildProcess.h"

namespace gf::bench {

class BenchDesktop;

struct GlimmerfoldSettings {
    bool autoRaise = false;
    double autoRaiseDelaySeconds = 0.1;
};

// The real program on the bench desktop, set up as a user who finished the
// setup wizard, so that it starts watching input at once.
class GlimmerfoldProcess {
  public:
    // Returns once its tray icon is embedded and viewable in the tray host;
    // nullptr with a reason (and its output) when that does not happen.
    static std::unique_ptr<GlimmerfoldProcess> launch(BenchDesktop& desktop,
                                                      const std::filesystem::path& executable,
                                                      const GlimmerfoldSettings& settings,
                                                      std::string* error);

    explicit GlimmerfoldProcess(std::unique_ptr<test::ChildProcess> process, double startupMs)
        : process_(std::move(process)), startupMs_(startupMs) {}

    pid_t pid() const { return process_->pid(); }
    bool isRunning() { return process_->isRunning(); }
    // From just before exec to the tray icon being mapped.
    double startupMs() const { return startupMs_; }
    // Asks it to quit as a session would (SIGTERM) and waits until it has.
    void quit() { process_->terminate(std::chrono::seconds(5)); }

  private:
    std::unique_ptr<test::ChildProcess> process_;
    double startupMs_;
};

}  // namespace gf::bench
