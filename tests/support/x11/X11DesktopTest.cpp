#include "x11/X11DesktopTest.h"

#include <QCoreApplication>

#include <cstdlib>

namespace gf::test {

namespace {

// Socket notifiers and timers need an application object; a test main that
// creates one is preferred, this covers binaries linking gtest_main.
void ensureApplication() {
    if (QCoreApplication::instance() != nullptr) {
        return;
    }
    static int argc = 1;
    static char name[] = "glimmerfold-e2e";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
}

}  // namespace

X11DesktopTest::X11DesktopTest() = default;

X11DesktopTest::~X11DesktopTest() = default;

void X11DesktopTest::SetUp() {
    ensureApplication();
    // The backend decides from these whether it runs in an X11 session; the
    // private desktop is one, whatever session runs the tests.
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
