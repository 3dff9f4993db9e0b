#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <fstream>

#include "X11PlatformTest.h"
#include "platform/x11/X11GrantService.h"

namespace gf::test {
namespace {

using PlatformTest = X11PlatformTest;

TEST_F(PlatformTest, BothGrantsArePresentInAnX11SessionOnly) {
    GrantService& grants = platform_->grants();
    EXPECT_TRUE(grants.isAccessibilityGranted());
    EXPECT_TRUE(grants.isInputMonitoringGranted());
    EXPECT_TRUE(grants.requestAccessibility());
    EXPECT_TRUE(grants.requestInputMonitoring());
    for (auto [name, value] :
         {std::pair{"WAYLAND_DISPLAY", "wayland-0"}, std::pair{"XDG_SESSION_TYPE", "wayland"}}) {
        X11GrantService wayland(true, [name, value](const char* asked) {
            return std::string(asked) == name ? std::optional<std::string>(value) : std::nullopt;
        });
        EXPECT_FALSE(wayland.isAccessibilityGranted()) << name;
        EXPECT_FALSE(wayland.isInputMonitoringGranted()) << name;
        EXPECT_FALSE(wayland.requestInputMonitoring()) << name;
    }
}

// A 3200 x 1080 screen: the primary monitor, 1280 x 800, at the top left and a taller
// 1920 x 1080 one to its right, so that the root reaches below the primary monitor.
class MonitorsOfTwoSizesTest : public X11PlatformTest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {3200, 1080}; }

    // Each display's usable part while the docks stand; they go afterwards.
    std::vector<Rect> usableWhile(const std::vector<WindowId>& docks) {
        std::vector<Rect> usable;
        for (const DisplayInfo& display : platform_->displays().displays()) {
            usable.push_back(display.visibleFrame);
        }
        for (const WindowId dock : docks) {
            desktop().destroyWindow(dock);
        }
        return usable;
    }
};

TEST_F(MonitorsOfTwoSizesTest, ComePrimaryFirstAndDocksShrinkOnlyTheMonitorTheyAreOn) {
    // A shorter monitor on the left that starts 100 pixels down, and the primary on the right,
    // listed second. A 30-pixel panel along the top of the left one reserves the root's top 130
    // rows, but only across the left monitor's columns; another runs along the primary's bottom.
    desktop().setMonitors({{0, 100, 1280, 600}, {1280, 0, 1280, 800}}, 1);
    std::vector<WindowId> docks{
        desktop().createDock(0, 100, 1280, 30, strutAlong(Edge::top, 130, 0, 1279)),
        desktop().createDock(1280, 770, 1280, 30, strutAlong(Edge::bottom, 310, 1280, 2559))};
    std::vector<DisplayInfo> displays = platform_->displays().displays();
    ASSERT_EQ(displays.size(), 2u);
    EXPECT_EQ(displays[0].frame, (Rect{1280, 0, 1280, 800}));
    EXPECT_EQ(displays[1].frame, (Rect{0, 100, 1280, 600}));
    EXPECT_EQ(usableWhile(docks), (std::vector<Rect>{{1280, 0, 1280, 770}, {0, 130, 1280, 570}}));

    desktop().setMonitors({{0, 0, 1280, 800}, {1280, 0, 1920, 1080}});
    // The primary's bottom panel ends 280 rows above the root's bottom, which its strut includes.
    docks = {desktop().createDock(0, 770, 1280, 30, strutAlong(Edge::bottom, 310, 0, 1279)),
             desktop().createDock(1280, 1050, 1920, 30, strutAlong(Edge::bottom, 30, 1280, 3199)),
             desktop().createDock(3160, 0, 40, 1050, strutAlong(Edge::right, 40, 0, 1049))};
    displays = platform_->displays().displays();
    ASSERT_EQ(displays.size(), 2u);
    EXPECT_EQ(displays[0].frame, (Rect{0, 0, 1280, 800}));
    EXPECT_EQ(displays[1].frame, (Rect{1280, 0, 1920, 1080}));
    EXPECT_EQ(usableWhile(docks), (std::vector<Rect>{{0, 0, 1280, 770}, {1280, 0, 1880, 1050}}));

    // On the edge between the monitors, measured from the root's edges, each of these struts
    // spans the whole other monitor.
    docks = {desktop().createDock(1240, 0, 40, 800, strutAlong(Edge::right, 1960, 0, 799)),
             desktop().createDock(1280, 0, 40, 1080, strutAlong(Edge::left, 1320, 0, 1079))};
    EXPECT_EQ(usableWhile(docks), (std::vector<Rect>{{0, 0, 1240, 800}, {1320, 0, 1880, 1080}}));

    // The same across a horizontal edge: a wide monitor above a narrower one.
    desktop().setMonitors({{0, 0, 1920, 540}, {0, 540, 1280, 540}});
    desktop().createDock(0, 510, 1920, 30, strutAlong(Edge::bottom, 570, 0, 1919));
    desktop().createDock(0, 540, 1280, 30, strutAlong(Edge::top, 570, 0, 1279));
    EXPECT_EQ(usableWhile({}), (std::vector<Rect>{{0, 0, 1920, 510}, {0, 570, 1280, 510}}));
}

class ApplicationRegistryTest : public X11PlatformTest {
  protected:
    void SetUp() override {
        X11PlatformTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        // Set after openbox started, which looks for its theme in the same places.
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
        const auto all = platform_->applications().runningApplications();
        const auto found = std::ranges::find(all, pid, &RunningApplication::pid);
        return found == all.end() ? std::nullopt : std::optional(*found);
    }

    std::filesystem::path applications_;
};

TEST_F(ApplicationRegistryTest, NamesAndIconsComeFromDesktopEntriesElseFromTheWindows) {
    TestClient& logo = desktop().startXlogo(100, 80, 200, 150);
    TestClient& terminal = desktop().startXterm(500, 300, 40, 10);
    // The test process's own application: only a utility window, with icons.
    const WindowId paletteWindow =
        desktop().createWindow(windowAt(900, 0, "_NET_WM_WINDOW_TYPE_UTILITY"));
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

TEST_F(PlatformTest, ActivationFocusesTheTopWindowAndRaisesTheOthers) {
    const WindowId lower = desktop().createWindow(windowAt(100, 100));
    const WindowId upper = desktop().createWindow(windowAt(150, 150));
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
