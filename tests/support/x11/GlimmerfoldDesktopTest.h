#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "x11/GestureHands.h"
#include "x11/GlimmerfoldLauncher.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {

// The sandboxed program with a tray host (else Settings opens in the way); sanitizer reports fail.
class GlimmerfoldDesktopTest : public X11DesktopTest {
  protected:
    X11Desktop::Options desktopOptions() const override;
    virtual std::vector<std::string> settings() const;

    void SetUp() override;
    void TearDown() override;

    GlimmerfoldLauncher& glimmerfold() { return *glimmerfold_; }
    GestureHands& hands() { return *hands_; }
    TrayHost& tray() { return desktop().trayHost(); }

    std::unique_ptr<ChildProcess> launch(const std::string& outputName = "glimmerfold.out");
    // Launches and waits until the program reacts to the keys.
    std::unique_ptr<ChildProcess> start(
        const std::string& outputName = "glimmerfold.out",
        std::chrono::milliseconds timeout = std::chrono::seconds(10));

  private:
    std::unique_ptr<GlimmerfoldLauncher> glimmerfold_;
    std::unique_ptr<GestureHands> hands_;
};

}  // namespace gf::test
