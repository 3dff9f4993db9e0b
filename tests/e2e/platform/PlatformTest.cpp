#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <QAbstractEventDispatcher>
#include <QThread>

#include <algorithm>
#include <array>
#include <fstream>

#include "platform/ApplicationRegistry.h"
#include "platform/GrantService.h"
#include "platform/x11/X11GrantService.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class PlatformTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        platform_ = connectPlatform();
        ASSERT_NE(platform_, nullptr);
    }

    std::unique_ptr<X11Platform> platform_;
};

TEST_F(PlatformTest, ALostConnectionIsReportedOnceAndNotPolledAgain) {
    int reports = 0;
    platform_->setConnectionLostHandler([&] { ++reports; });
    auto tap = platform_->input().createEventTap([](const InputEvent&) {});
    ASSERT_NE(tap, nullptr);
    tap->setPointerMotionWanted(true);

    desktop().killServer();
    EXPECT_TRUE(waitUntil([&] { return reports > 0; }));
    EXPECT_TRUE(platform_->isConnectionLost());

    // A dead socket stays readable: were it still watched, the event loop
    // would wake without pause instead of a few times for its timers.
    int wakeUps = 0;
    QAbstractEventDispatcher* dispatcher =
        QAbstractEventDispatcher::instance(QThread::currentThread());
    auto counting =
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, [&] { ++wakeUps; });
    processEventsFor(200ms);
    QObject::disconnect(counting);
    EXPECT_LT(wakeUps, 100);
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(platform_->windowServer().onScreenWindows().size(), 0u);
}

TEST_F(PlatformTest, GrantsArePresentInAnX11SessionAndMissingUnderWayland) {
    GrantService& grants = platform_->grants();
    EXPECT_TRUE(grants.isAccessibilityGranted());
    EXPECT_TRUE(grants.isInputMonitoringGranted());
    EXPECT_TRUE(grants.requestAccessibility());
    EXPECT_TRUE(grants.requestInputMonitoring());

    for (auto [name, value] :
         {std::pair{"WAYLAND_DISPLAY", "wayland-0"}, std::pair{"XDG_SESSION_TYPE", "wayland"}}) {
        X11GrantService wayland(
            true, [name, value](const char* asked) -> std::optional<std::string> {
                return std::string(asked) == name ? std::optional<std::string>(value)
                                                  : std::nullopt;
            });
        EXPECT_FALSE(wayland.isAccessibilityGranted()) << name;
        EXPECT_FALSE(wayland.isInputMonitoringGranted()) << name;
        EXPECT_FALSE(wayland.requestInputMonitoring()) << name;
    }
}

class ApplicationRegistryTest : public PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        // Desktop entries come from a directory of the test's own; set after
        // openbox started, which looks for its theme in the same places.
        applications_ = std::filesystem::temp_directory_path() /
                        ("glimmerfold-applications-" + std::to_string(getpid()));
        std::filesystem::create_directories(applications_ / "applications");
        std::ofstream(applications_ / "applications" / "xlogo.desktop")
            << "[Desktop Entry]\nType=Application\nName=Logo Viewer\nName[de]=Logoanzeige\n"
               "Icon=xlogo-icon\nExec=xlogo\n\n[Desktop Action New]\nName=Other\nIcon=other\n";
        setenv("XDG_DATA_HOME", applications_.c_str(), 1);
        setenv("XDG_DATA_DIRS", (applications_ / "none").c_str(), 1);
        setenv("LANG", "C", 1);
    }

    void TearDown() override {
        unsetenv("XDG_DATA_HOME");
        unsetenv("XDG_DATA_DIRS");
        std::filesystem::remove_all(applications_);
    }

    std::optional<RunningApplication> applicationOf(std::int32_t pid) {
        for (const RunningApplication& application :
             platform_->applications().runningApplications()) {
            if (application.pid == pid) {
                return application;
            }
        }
        return std::nullopt;
    }

    std::filesystem::path applications_;
};

TEST_F(ApplicationRegistryTest, NamesAndIconsComeFromDesktopEntriesElseFromTheWindows) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    TestClient& terminal = desktop().startXterm(500, 300, 40, 10);
    // The test process's own application: only a utility window, with icons.
    TestWindowOptions palette;
    palette.x = 900;
    palette.type = "_NET_WM_WINDOW_TYPE_UTILITY";
    const WindowId paletteWindow = desktop().createWindow(palette);
    std::vector<std::uint32_t> icons{2, 2};
    icons.insert(icons.end(), 4, 0xff0000ff);
    icons.insert(icons.end(), {4, 4});
    icons.insert(icons.end(), 16, 0xff00ff00);
    xcb_connection_t* c = desktop().connection();
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, paletteWindow, probe().atom("_NET_WM_ICON"),
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(icons.size()),
                        icons.data());
    input().sync();

    const std::optional<RunningApplication> logoApp = applicationOf(logo.pid);
    ASSERT_TRUE(logoApp);
    EXPECT_EQ(logoApp->identifier, "XLogo");
    EXPECT_EQ(logoApp->displayName, "Logo Viewer");
    EXPECT_EQ(logoApp->icon.themeName, "xlogo-icon");
    EXPECT_TRUE(logoApp->isRegular);

    const std::optional<RunningApplication> terminalApp = applicationOf(terminal.pid);
    ASSERT_TRUE(terminalApp);
    EXPECT_EQ(terminalApp->identifier, "XTerm");
    EXPECT_EQ(terminalApp->displayName, "XTerm");
    EXPECT_TRUE(terminalApp->isRegular);

    const std::optional<RunningApplication> own = applicationOf(getpid());
    ASSERT_TRUE(own);
    EXPECT_EQ(own->identifier, "GlimmerfoldTestWindow");
    EXPECT_FALSE(own->isRegular);
    EXPECT_EQ(own->icon.width, 4);
    EXPECT_EQ(own->icon.argb, std::vector<std::uint32_t>(16, 0xff00ff00));

    EXPECT_EQ(platform_->applications().identifierOfProcess(logo.pid), "XLogo");
    EXPECT_EQ(platform_->applications().identifierOfProcess(999999), std::nullopt);
    EXPECT_EQ(platform_->applications().iconOfInstalledApplication("XLOGO")->themeName,
              "xlogo-icon");
    EXPECT_EQ(platform_->applications().iconOfInstalledApplication("XTerm"), std::nullopt);
}

TEST_F(ApplicationRegistryTest, ActivationFocusesTheTopWindowAndRaisesTheOthers) {
    TestWindowOptions first;
    first.x = 100;
    first.y = 100;
    const WindowId lower = desktop().createWindow(first);
    TestWindowOptions second;
    second.x = 150;
    second.y = 150;
    const WindowId upper = desktop().createWindow(second);
    TestClient& logo = desktop().startXlogo(120, 120, 400, 300);
    ASSERT_TRUE(waitUntil([&] { return probe().focusedClient() == logo.window; }));

    ASSERT_TRUE(platform_->applications().activate(getpid()));
    EXPECT_TRUE(waitUntil([&] {
        return probe().focusedClient() == upper && probe().isAbove(upper, lower) &&
               probe().isAbove(lower, logo.window);
    }));
    EXPECT_FALSE(platform_->applications().activate(999999));
}

}  // namespace
}  // namespace gf::test
