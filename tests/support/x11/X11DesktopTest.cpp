#include "x11/X11DesktopTest.h"

#include <cstdlib>

namespace gf::test {

void X11DesktopTest::SetUp() {
    // The backend decides from these whether it runs in an X11 session; the private desktop is one.
    unsetenv("WAYLAND_DISPLAY");
    setenv("XDG_SESSION_TYPE", "x11", 1);
    std::string error;
    desktop_ = X11Desktop::start(desktopOptions(), &error);
    ASSERT_NE(desktop_, nullptr) << "cannot start the private desktop: " << error;
}

std::unique_ptr<X11Platform> X11DesktopTest::connectPlatform() {
    std::string error;
    auto platform = X11Platform::connect(desktop_->displayName().c_str(), &error);
    EXPECT_NE(platform, nullptr) << "cannot connect the X11 backend: " << error;
    return platform;
}

}  // namespace gf::test
