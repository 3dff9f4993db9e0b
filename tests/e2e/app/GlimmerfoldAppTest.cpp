#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "TrayProbe.h"
#include "x11/ChildProcess.h"
#include "x11/WaitUntil.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

constexpr auto kStartTimeout = 10s;

std::string fileText(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// The real build/glimmerfold on a private desktop, with its own settings
// (setup completed), runtime directory and log.
class GlimmerfoldAppTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        home_ = desktop().directory() / "glimmerfold-home";
        std::filesystem::create_directories(home_ / "config/glimmerfold");
        std::filesystem::create_directories(home_ / "runtime");
        ::chmod((home_ / "runtime").c_str(), 0700);
        std::ofstream(home_ / "config/glimmerfold/glimmerfold.conf") << "[General]\n"
                                                                        "hasCompletedSetup=true\n";
        tray_ = std::make_unique<TrayProbe>(desktop().connection(), desktop().root());
    }

    void startTrayHost() {
        ChildProcess::Options options;
        options.arguments = {"trayer",      "--edge",        "top",     "--align", "right",
                             "--widthtype", "pixel",         "--width", "120",     "--height",
                             "28",          "--SetDockType", "true"};
        options.environment = desktop().clientEnvironment();
        options.outputFile = (desktop().directory() / "trayer.log").string();
        std::string error;
        trayHost_ = ChildProcess::start(options, &error);
        ASSERT_NE(trayHost_, nullptr) << error;
        ASSERT_TRUE(waitUntil([&] { return tray_->trayOwner().has_value(); }, kStartTimeout))
            << "trayer took no tray selection";
    }

    std::unique_ptr<ChildProcess> launch(const std::string& logName) {
        ChildProcess::Options options;
        options.arguments = {GLIMMERFOLD_EXECUTABLE};
        options.environment = desktop().clientEnvironment();
        options.environment.emplace_back("XDG_CONFIG_HOME", (home_ / "config").string());
        options.environment.emplace_back("XDG_RUNTIME_DIR", (home_ / "runtime").string());
        options.environment.emplace_back("XDG_CACHE_HOME", (home_ / "cache").string());
        options.environment.emplace_back("XDG_DATA_HOME", (home_ / "data").string());
        // Only read when the program is built with AddressSanitizer.
        options.environment.emplace_back("LSAN_OPTIONS",
                                         "suppressions=" GLIMMERFOLD_LSAN_SUPPRESSIONS);
        options.outputFile = (desktop().directory() / logName).string();
        std::string error;
        auto process = ChildProcess::start(options, &error);
        EXPECT_NE(process, nullptr) << error;
        return process;
    }

    std::string output(const std::string& logName) {
        return fileText(desktop().directory() / logName);
    }

    std::optional<Rect> trayIcon() {
        std::optional<std::uint32_t> icon;
        if (!waitUntil([&] { return (icon = tray_->findViewable("Glimmerfold")).has_value(); },
                       kStartTimeout)) {
            return std::nullopt;
        }
        return tray_->rootGeometry(*icon);
    }

    // Holds Control + Super over the window with the pointer at (x, y) and
    // nudges the pointer right until the window follows, since Glimmerfold
    // sees the keys a moment after the server does (and magnetics hold the
    // window at its old edges for the first few pixels). Returns the pointer
    // position the gesture measures from.
    std::optional<Point> beginMove(WindowId window, int x, int y) {
        const Rect before = *probe().frameGeometry(window);
        input().movePointerTo(x, y);
        input().pressKey(Keysym::controlL);
        input().pressKey(Keysym::superL);
        for (int nudge = 3; nudge <= 60; nudge += 3) {
            input().movePointerTo(x + nudge, y);
            std::optional<Rect> now;
            if (waitUntil(
                    [&] {
                        now = probe().frameGeometry(window);
                        return now && now->x != before.x;
                    },
                    300ms)) {
                return Point{x + nudge - (now->x - before.x), y - (now->y - before.y)};
            }
        }
        return std::nullopt;
    }

    void endMove() {
        input().releaseKey(Keysym::superL);
        input().releaseKey(Keysym::controlL);
    }

    void clickAt(double x, double y, int button) {
        input().movePointerTo(static_cast<int>(x), static_cast<int>(y));
        input().pressButton(button);
        input().releaseButton(button);
    }

    std::filesystem::path home_;
    std::unique_ptr<TrayProbe> tray_;
    std::unique_ptr<ChildProcess> trayHost_;
};

TEST_F(GlimmerfoldAppTest, MovesAWindowWhileControlSuperIsHeldAndQuitsFromTheTrayMenu) {
    startTrayHost();
    ASSERT_FALSE(HasFatalFailure());
    auto glimmerfold = launch("glimmerfold.log");
    ASSERT_NE(glimmerfold, nullptr);
    const std::optional<Rect> icon = trayIcon();
    ASSERT_TRUE(icon) << "no tray icon\n" << output("glimmerfold.log");

    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    const Rect before = *probe().frameGeometry(logo.window);
    const std::optional<Point> origin = beginMove(logo.window, 400, 330);
    ASSERT_TRUE(origin) << "the window never followed the pointer\n" << output("glimmerfold.log");
    for (int step = 1; step <= 6; ++step) {
        input().movePointerTo(400 + 20 * step, 330 + 15 * step);
    }
    const Rect expected{before.x + 520 - origin->x, before.y + 420 - origin->y, before.width,
                        before.height};
    EXPECT_TRUE(waitUntil([&] { return probe().frameGeometry(logo.window) == expected; }))
        << "frame at " << probe().frameGeometry(logo.window)->x << ","
        << probe().frameGeometry(logo.window)->y << ", expected " << expected.x << ","
        << expected.y;
    endMove();
    input().movePointerBy(50, 50);
    input().sync();
    processEventsFor(200ms);
    EXPECT_EQ(probe().frameGeometry(logo.window), expected)
        << "the window stays where the gesture left it";

    // The menu opens from the tray icon, as a user would open it.
    clickAt(icon->x + icon->width / 2, icon->y + icon->height / 2, 3);
    // The menu is the tall popup (a tooltip may show too).
    std::optional<Rect> menuFrame;
    ASSERT_TRUE(waitUntil([&] {
        for (const std::uint32_t popup : tray_->popups("Glimmerfold")) {
            menuFrame = tray_->rootGeometry(popup);
            if (menuFrame && menuFrame->height > 100) {
                return true;
            }
        }
        return false;
    })) << "the tray menu did not open";
    EXPECT_TRUE(
        tray_->saveScreenshot(std::filesystem::path(GLIMMERFOLD_SCREENSHOT_DIR) / "tray-menu.png"));

    // "Quit Glimmerfold" is the last item.
    clickAt(menuFrame->x + menuFrame->width / 2, menuFrame->y + menuFrame->height - 12, 1);
    EXPECT_EQ(glimmerfold->waitForExit(10s), 0) << output("glimmerfold.log");
    EXPECT_TRUE(waitUntil([&] { return !tray_->findViewable("Glimmerfold").has_value(); }))
        << "the tray icon went with the program";
}

TEST_F(GlimmerfoldAppTest, SecondLaunchShowsTheRunningOnesSettingsAndExits) {
    startTrayHost();
    ASSERT_FALSE(HasFatalFailure());
    auto first = launch("first.log");
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(trayIcon()) << output("first.log");
    EXPECT_FALSE(probe().findClientByClass("Glimmerfold")) << "no window until asked";

    auto second = launch("second.log");
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->waitForExit(10s), 0) << output("second.log");

    std::optional<WindowId> settings;
    ASSERT_TRUE(waitUntil([&] {
        return (settings = probe().findClientByClass("Glimmerfold")).has_value();
    })) << output("first.log");
    EXPECT_EQ(tray_->title(*settings), "Glimmerfold");
    // Not shown in the dock by default: kept out of the taskbar.
    EXPECT_TRUE(
        waitUntil([&] { return tray_->hasState(*settings, "_NET_WM_STATE_SKIP_TASKBAR"); }));
    EXPECT_TRUE(first->isRunning());

    ::kill(first->pid(), SIGTERM);
    EXPECT_EQ(first->waitForExit(10s), 0) << output("first.log");
}

TEST_F(GlimmerfoldAppTest, WithoutATrayTheSettingsWindowOpensAndSaysWhy) {
    auto glimmerfold = launch("glimmerfold.log");
    ASSERT_NE(glimmerfold, nullptr);
    std::optional<WindowId> settings;
    ASSERT_TRUE(
        waitUntil([&] { return (settings = probe().findClientByClass("Glimmerfold")).has_value(); },
                  kStartTimeout))
        << output("glimmerfold.log");
    EXPECT_EQ(tray_->title(*settings), "Glimmerfold");
    const Rect frame = *probe().frameGeometry(*settings);
    EXPECT_GE(frame.width, 650);
    EXPECT_GE(frame.height, 450);

    ::kill(glimmerfold->pid(), SIGINT);
    EXPECT_EQ(glimmerfold->waitForExit(10s), 0) << output("glimmerfold.log");
    EXPECT_NE(output("glimmerfold.log").find("No system tray is available"), std::string::npos)
        << output("glimmerfold.log");
}

TEST_F(GlimmerfoldAppTest, TerminationDuringAMoveEndsTheGestureAndExitsCleanly) {
    startTrayHost();
    ASSERT_FALSE(HasFatalFailure());
    auto glimmerfold = launch("glimmerfold.log");
    ASSERT_NE(glimmerfold, nullptr);
    ASSERT_TRUE(trayIcon()) << output("glimmerfold.log");

    TestClient& logo = desktop().startXlogo(200, 200, 200, 150);
    const Rect before = *probe().frameGeometry(logo.window);
    const std::optional<Point> origin = beginMove(logo.window, 300, 280);
    ASSERT_TRUE(origin) << output("glimmerfold.log");
    input().movePointerTo(340, 300);
    const Rect moved{before.x + 340 - origin->x, before.y + 300 - origin->y, before.width,
                     before.height};
    ASSERT_TRUE(waitUntil([&] { return probe().frameGeometry(logo.window) == moved; }));

    ::kill(glimmerfold->pid(), SIGTERM);
    EXPECT_EQ(glimmerfold->waitForExit(10s), 0) << output("glimmerfold.log");
    // Nobody moves the window any more, keys still held or not.
    input().movePointerTo(400, 400);
    input().sync();
    processEventsFor(300ms);
    EXPECT_EQ(probe().frameGeometry(logo.window), moved);
    endMove();
}

}  // namespace
}  // namespace gf::test
