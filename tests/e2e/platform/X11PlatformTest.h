#pragma once

#include "x11/X11DesktopTest.h"

namespace gf::test {

// The X11 backend connected to a private desktop of its own.
class X11PlatformTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        platform_ = connectPlatform();
        ASSERT_NE(platform_, nullptr);
    }

    std::unique_ptr<X11Platform> platform_;
};

}  // namespace gf::test
