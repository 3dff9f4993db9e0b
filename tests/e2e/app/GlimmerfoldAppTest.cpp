#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QImage>
#include <algorithm>
#include <csignal>
#include <utility>

#include "x11/GlimmerfoldDesktopTest.h"
#include "x11/ScreenGrab.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

// The real build/glimmerfold on a private desktop with its own settings, runtime directory and log;
// the tray host only once a test starts it.
class GlimmerfoldAppTest : public GlimmerfoldDesktopTest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {}; }

    std::unique_ptr<ChildProcess> launch(const std::string& outputName,
                                         const std::vector<std::string>& arguments = {}) {
        auto process = glimmerfold().launch(outputName, arguments);
        EXPECT_NE(process, nullptr) << glimmerfold().error();
        return process;
    }
    bool startTrayHost() {
        std::string error;
        EXPECT_TRUE(desktop().startTrayHost(&error)) << error;
        return !HasFailure();
    }
    std::string output(const std::string& outputName) { return glimmerfold().output(outputName); }

    // How `glimmerfold <arguments>` ended, as a shell or a key binding sees it: the exit status
    // (none while still running after a while, or killed) and stdout and stderr together.
    using Answer = std::pair<std::optional<int>, std::string>;
    Answer command(const std::vector<std::string>& arguments) {
        const std::string name = "command-" + std::to_string(++commandsRun_) + ".log";
        const auto process = launch(name, arguments);
        if (!process) {
            return {};
        }
        return {process->waitForExit(20s), output(name)};
    }
    std::string notRunning() {
        return "Glimmerfold is not running on display " + desktop().displayName() + ".\n";
    }
    std::string savedSettings() { return glimmerfold().settingsText(); }
    // Glimmerfold's own window (Settings or the wizard), once it shows up.
    std::optional<WindowId> ownWindow() {
        std::optional<WindowId> window;
        waitUntil([&] { return (window = probe().findClientByClass("Glimmerfold")).has_value(); },
                  10s);
        return window;
    }

    // A window is mapped before it is drawn: it counts once its area differs from what was there
    // before and two reads agree.
    bool isDrawn(const Rect& frame, const QImage& before) {
        const QRect area(static_cast<int>(frame.x), static_cast<int>(frame.y),
                         static_cast<int>(frame.width), static_cast<int>(frame.height));
        QImage previous;
        return waitUntil([&] {
            const QImage now =
                grabScreen(desktop().connection(), desktop().root()).value_or(QImage()).copy(area);
            const bool settled = !now.isNull() && now != before.copy(area) && now == previous;
            previous = now;
            return settled;
        });
    }

    // What a window manager sends when its close button is pressed.
    void requestClose(WindowId window) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = probe().atom("WM_PROTOCOLS");
        event.data.data32[0] = probe().atom("WM_DELETE_WINDOW");  // the time: 0, the current one
        xcb_send_event(desktop().connection(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&event));
        xcb_flush(desktop().connection());
    }

    int commandsRun_ = 0;
};

// Each command does what the tray menu's item does, saved as the menu saves it, and says what
// is now true; the menu itself, opened from the tray icon as a user opens it, ends the program.
TEST_F(GlimmerfoldAppTest, CommandsDriveTheRunningInstanceAsItsTrayMenuDoesWhichQuitsIt) {
    ASSERT_TRUE(startTrayHost());
    auto running = launch("running.log");
    ASSERT_NE(running, nullptr);
    ASSERT_TRUE(tray().waitForIcon()) << output("running.log");
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);

    EXPECT_EQ(command({"--disable"}), (Answer{0, "Glimmerfold is now disabled.\n"}));
    EXPECT_NE(savedSettings().find("isEnabled=false"), std::string::npos) << savedSettings();
    EXPECT_FALSE(hands().begin(GestureKind::move, logo.window, 400, 330, 1500ms))
        << "a window followed the keys while disabled";
    hands().release();
    EXPECT_EQ(command({"--disable"}), (Answer{0, "Glimmerfold was already disabled.\n"}));

    EXPECT_EQ(command({"--toggle"}), (Answer{0, "Glimmerfold is now enabled.\n"}));
    EXPECT_NE(savedSettings().find("isEnabled=true"), std::string::npos) << savedSettings();
    EXPECT_TRUE(hands().begin(GestureKind::move, logo.window, 400, 330))
        << "no window followed the keys once enabled again\n"
        << output("running.log");
    hands().release();
    EXPECT_EQ(command({"--enable"}), (Answer{0, "Glimmerfold was already enabled.\n"}));

    EXPECT_FALSE(probe().findClientByClass("Glimmerfold")) << "no window until asked";
    EXPECT_EQ(command({"--settings"}), (Answer{0, "Glimmerfold's Settings window is open.\n"}));
    EXPECT_TRUE(ownWindow()) << output("running.log");

    const std::optional<QImage> menuClosed = grabScreen(desktop().connection(), desktop().root());
    ASSERT_TRUE(menuClosed);
    const std::optional<Rect> menuFrame = tray().openMenu();
    ASSERT_TRUE(menuFrame) << "the tray menu did not open";
    ASSERT_TRUE(isDrawn(*menuFrame, *menuClosed)) << "the tray menu was never drawn";
    // "Quit Glimmerfold" is the last item.
    tray().clickAt(menuFrame->midX(), menuFrame->maxY() - 12, 1);
    EXPECT_EQ(running->waitForExit(10s), 0) << output("running.log");
    EXPECT_TRUE(waitUntil([&] { return !tray().findIcon().has_value(); }))
        << "the tray icon went with the program";
}

// Without a tray the Settings window opens and says why. Without an instance the commands change
// nothing and say so; --settings starts one, which --quit ends, as closing the wizard does.
TEST_F(GlimmerfoldAppTest, WithoutATrayOrAnInstanceItSaysSoAndSettingsStartsOne) {
    auto trayless = launch("trayless.log");
    ASSERT_NE(trayless, nullptr);
    const std::optional<WindowId> settings = ownWindow();
    ASSERT_TRUE(settings) << output("trayless.log");
    const Rect frame = *probe().frameGeometry(*settings);
    EXPECT_GE(frame.width, 650);
    EXPECT_GE(frame.height, 450);
    ::kill(trayless->pid(), SIGINT);
    EXPECT_EQ(trayless->waitForExit(10s), 0) << output("trayless.log");
    EXPECT_NE(output("trayless.log").find("No system tray is available"), std::string::npos)
        << output("trayless.log");

    const std::string settingsBefore = savedSettings();
    for (const char* option : {"--enable", "--disable", "--toggle", "--quit"}) {
        EXPECT_EQ(command({option}), (Answer{1, notRunning()})) << option;
    }
    EXPECT_EQ(savedSettings(), settingsBefore);

    const Answer help = command({"--help"});
    EXPECT_EQ(help.first, 0);
    for (const char* option : {"--enable", "--disable", "--toggle", "--settings", "--quit"}) {
        EXPECT_NE(help.second.find(option), std::string::npos) << option << "\n" << help.second;
    }
    for (const std::vector<std::string>& misuse :
         {std::vector<std::string>{"--enable", "--quit"}, {"--frobnicate"}, {"enable"}}) {
        const Answer answer = command(misuse);
        EXPECT_EQ(answer.first, 2) << answer.second;
        EXPECT_EQ(std::ranges::count(answer.second, '\n'), 1) << answer.second;
    }

    ASSERT_TRUE(startTrayHost());
    auto started = launch("started.log", {"--settings"});
    ASSERT_NE(started, nullptr);
    ASSERT_TRUE(ownWindow()) << output("started.log");  // with a tray, only --settings opens it
    EXPECT_EQ(output("started.log"),
              "Glimmerfold was not running; started it with its Settings window open.\n");

    EXPECT_EQ(command({"--quit"}), (Answer{0, "Glimmerfold has quit.\n"}));
    EXPECT_EQ(started->waitForExit(10s), 0) << output("started.log");
    EXPECT_EQ(command({"--quit"}), (Answer{1, notRunning()}));

    // Under Wayland the first run cannot get past the grants; closing the wizard, as the window
    // manager's close button does, ends Glimmerfold cleanly instead of leaving it running unseen.
    glimmerfold().writeSettings("[General]\nhasCompletedSetup=false\n");
    glimmerfold().setEnvironment("XDG_SESSION_TYPE", "wayland");
    auto firstRun = launch("first-run.log");
    ASSERT_NE(firstRun, nullptr);
    const std::optional<WindowId> wizard = ownWindow();
    ASSERT_TRUE(wizard) << output("first-run.log");
    requestClose(*wizard);
    EXPECT_EQ(firstRun->waitForExit(10s), 0) << output("first-run.log");
    EXPECT_NE(savedSettings().find("hasCompletedSetup=false"), std::string::npos)
        << savedSettings();
}

}  // namespace
}  // namespace gf::test
