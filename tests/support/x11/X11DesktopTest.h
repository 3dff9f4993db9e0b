#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "platform/x11/X11Platform.h"
#include "x11/WaitUntil.h"
#include "x11/X11Desktop.h"

namespace gf::test {

// A test with a private desktop, stopped after the derived fixture's members are gone.
class X11DesktopTest : public ::testing::Test {
  protected:
    virtual X11Desktop::Options desktopOptions() const { return {}; }

    void SetUp() override;

    X11Desktop& desktop() { return *desktop_; }
    XTestDriver& input() { return desktop_->input(); }
    const DesktopProbe& probe() const { return desktop_->probe(); }

    // The backend under test on this desktop; a test failure and nullptr when it cannot connect.
    std::unique_ptr<X11Platform> connectPlatform();

  private:
    std::unique_ptr<X11Desktop> desktop_;
};

}  // namespace gf::test
