#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "x11/GestureHands.h"
#include "x11/GlimmerfoldLauncher.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {

// The real program, sandboxed as an ordinary user, on a private desktop with a tray host (without
// one Glimmerfold opens its Settings window after a while, in the way of the gestures). When the
// test ends the hands let go, and what the sanitizers reported fails it: the programs it started
// were stopped when its body ended, which is when leaks are reported.
class GlimmerfoldDesktopTest : public X11DesktopTest {
  protected:
    X11Desktop::Options desktopOptions() const override;
    // The settings lines after a completed setup that the program starts with.
    virtual std::vector<std::string> settings() const;

    void SetUp() override;
    void TearDown() override;

    GlimmerfoldLauncher& glimmerfold() { return *glimmerfold_; }
    GestureHands& hands() { return *hands_; }
    TrayHost& tray() { return desktop().trayHost(); }

    // A test failure and nullptr when the program cannot be started.
    std::unique_ptr<ChildProcess> launch(const std::string& outputName = "glimmerfold.out");
    // Starts the program and waits until it reacts to the keys.
    std::unique_ptr<ChildProcess> start(
        const std::string& outputName = "glimmerfold.out",
        std::chrono::milliseconds timeout = std::chrono::seconds(10));

  private:
    std::unique_ptr<GlimmerfoldLauncher> glimmerfold_;
    std::unique_ptr<GestureHands> hands_;
};

}  // namespace gf::test
