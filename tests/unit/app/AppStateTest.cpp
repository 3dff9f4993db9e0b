#include "app/AppState.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <map>

#include "TestUiFactory.h"
#include "UrlRecorder.h"
#include "app/AppDelegate.h"
#include "app/TaskbarPresence.h"
#include "engine/AutoRaiseManager.h"
#include "engine/DragSession.h"
#include "engine/EventTapManager.h"
#include "fake/FakeDesktop.h"
#include "model/DebugLog.h"
#include "platform/InputEvent.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class RecordingTaskbar final : public TaskbarPresence {
  public:
    void setListedInTaskbar(QWidget& window, bool listed) override { listed_[&window] = listed; }
    std::optional<bool> listed(QWidget* window) const {
        const auto found = listed_.find(window);
        return found == listed_.end() ? std::nullopt : std::optional<bool>(found->second);
    }

  private:
    std::map<QWidget*, bool> listed_;
};

class AppStateTest : public ::testing::Test {
  protected:
    AppStateTest() {
        setDebugLogPath(dir.filePath("glimmerfold.log").toStdString());
        settings.setHasCompletedSetup(true);
    }
    ~AppStateTest() override {
        if (appState) {
            appState->setTaskbarPresence(nullptr);
        }
    }

    // AppState reacts to changes only, so tests arrange the settings first.
    AppState& launch() {
        appState = std::make_unique<AppState>(settings, platform, ui);
        appState->setTaskbarPresence(&taskbar);
        delegate = std::make_unique<AppDelegate>(*appState, [this] { return trayAvailable; });
        delegate->applicationDidFinishLaunching();
        return *appState;
    }

    std::size_t tapsMade() { return desktop.input().eventTapCreationCount(); }
    // Each attempt that fails leaves the event tap's line in the log.
    std::size_t tapFailures() const {
        QFile log(dir.filePath("glimmerfold.log"));
        return log.open(QIODevice::ReadOnly)
                   ? static_cast<std::size_t>(log.readAll().count("FAILED to create event tap"))
                   : 0;
    }
    bool nothingRequested() {
        return desktop.grants().accessibilityRequests() == 0 &&
               desktop.grants().inputMonitoringRequests() == 0 &&
               desktop.grants().whereToGrantShown() == 0 && opened.urls().isEmpty();
    }

    QTemporaryDir dir;
    Settings settings{dir.filePath("glimmerfold.conf")};
    FakeDesktop desktop;
    Platform platform = desktop.platform();
    TestUiFactory ui;
    RecordingTaskbar taskbar;
    UrlRecorder opened{{QStringLiteral("file")}};
    bool trayAvailable = true;
    std::unique_ptr<AppState> appState;
    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(AppStateTest, FirstRunShowsOnlyTheWizardUntilItFinishes) {
    settings.setHasCompletedSetup(false);
    AppState& state = launch();

    QWidget* wizard = state.setupWizardWindow();
    ASSERT_NE(wizard, nullptr);
    EXPECT_TRUE(wizard->isVisible());
    EXPECT_EQ(wizard->windowTitle(), "Welcome to Glimmerfold");
    EXPECT_EQ(wizard->size(), QSize(500, 400));
    EXPECT_FALSE(wizard->windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(wizard->close()) << "the wizard has no way out but finishing";
    EXPECT_TRUE(wizard->isVisible());
    EXPECT_EQ(state.settingsWindow(), nullptr);

    desktop.advance(10s);
    EXPECT_EQ(tapsMade(), 0u);
    EXPECT_TRUE(nothingRequested());
    EXPECT_FALSE(state.isPollingPermission());
    EXPECT_FALSE(state.hasPermission());
    EXPECT_FALSE(state.listedInTaskbar().has_value()) << "taskbar policy untouched on first run";

    // What the wizard does when it finishes.
    settings.setHasCompletedSetup(true);
    state.closeSetupWizardWindow();
    state.setup();
    EXPECT_EQ(state.setupWizardWindow(), nullptr);
    EXPECT_TRUE(desktop.hasEventTap());
    EXPECT_TRUE(state.hasPermission());
    EXPECT_EQ(state.listedInTaskbar(), false);
}

TEST_F(AppStateTest, EngineSwitchedOffRequestsNothingUntilSwitchedOn) {
    settings.setIsEnabled(false);
    AppState& state = launch();
    desktop.advance(10s);
    EXPECT_TRUE(state.hasPermission());
    EXPECT_EQ(tapsMade(), 0u);
    EXPECT_TRUE(nothingRequested());
    EXPECT_FALSE(state.isPollingPermission());

    settings.setIsEnabled(true);
    EXPECT_TRUE(desktop.hasEventTap());
    EXPECT_TRUE(state.hasPermission());

    settings.setIsEnabled(false);
    EXPECT_FALSE(desktop.hasEventTap());
    EXPECT_TRUE(state.hasPermission()) << "switching off says nothing about the grants";

    desktop.setEventTapCreationFails(true);
    QSignalSpy changes(&state, &AppState::hasPermissionChanged);
    settings.setIsEnabled(true);
    EXPECT_FALSE(state.hasPermission());
    ASSERT_EQ(changes.count(), 1);
    EXPECT_FALSE(state.isPollingPermission()) << "only the start-up decision polls";
    EXPECT_TRUE(nothingRequested());
}

TEST_F(AppStateTest, TapThatCannotBeMadeAsksOnceAndPollsEveryTwoSecondsUntilItCan) {
    desktop.setEventTapCreationFails(true);
    settings.setAutoRaiseEnabled(true);
    appState = std::make_unique<AppState>(settings, platform, ui);
    QSignalSpy changes(appState.get(), &AppState::hasPermissionChanged);
    appState->setup();

    EXPECT_FALSE(appState->hasPermission());
    EXPECT_EQ(desktop.grants().accessibilityRequests(), 1);
    EXPECT_EQ(desktop.grants().inputMonitoringRequests(), 1);
    EXPECT_EQ(desktop.grants().whereToGrantShown(), 1);
    ASSERT_EQ(opened.urls().size(), 1) << "the help page about X11 sessions opens";
    EXPECT_TRUE(opened.urls().front().toLocalFile().endsWith("x11-session.html"));
    EXPECT_TRUE(appState->isPollingPermission());
    EXPECT_TRUE(appState->autoRaiseManager().isStarted()) << "auto raise does not wait for the tap";
    EXPECT_EQ(tapFailures(), 1u);

    desktop.advance(2s);
    EXPECT_EQ(tapFailures(), 2u);
    EXPECT_TRUE(appState->isPollingPermission());

    desktop.setEventTapCreationFails(false);
    desktop.advance(1999ms);
    EXPECT_FALSE(desktop.hasEventTap());
    desktop.advance(1ms);
    EXPECT_TRUE(desktop.hasEventTap());
    EXPECT_TRUE(appState->hasPermission());
    EXPECT_FALSE(appState->isPollingPermission());

    desktop.advance(10s);
    EXPECT_EQ(tapsMade(), 1u) << "the poll stopped with its first success";
    EXPECT_EQ(tapFailures(), 2u);
    EXPECT_EQ(desktop.grants().accessibilityRequests(), 1);
    ASSERT_GE(changes.count(), 1);
    EXPECT_TRUE(changes.back().at(0).toBool());

    // Setup again (after the wizard was reopened) while the tap runs: no second poll.
    appState->setup();
    EXPECT_FALSE(appState->isPollingPermission());
    EXPECT_EQ(tapsMade(), 1u);
    EXPECT_EQ(desktop.grants().accessibilityRequests(), 1);
}

TEST_F(AppStateTest, SettingsWindowIsMadeOnceAndKeptAfterClosing) {
    settings.setShowMenuBarIcon(false);
    AppState& state = launch();

    QWidget* window = state.settingsWindow();
    ASSERT_NE(window, nullptr) << "a hidden tray item leaves the Settings window as the way in";
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->windowTitle(), "Glimmerfold");
    EXPECT_EQ(window->size(), QSize(650, 450));
    EXPECT_EQ(window->minimumSize(), window->maximumSize()) << "not resizable";
    EXPECT_TRUE(window->windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_TRUE(window->windowFlags() & Qt::WindowMinimizeButtonHint);

    state.showSettingsWindow();
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(window->isVisible());
    state.showSettingsWindow();
    EXPECT_EQ(state.settingsWindow(), window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(ui.settingsViewsMade, 1);
}

TEST_F(AppStateTest, MissingTrayOpensTheSettingsWindowAndSaysWhy) {
    trayAvailable = false;
    testing::internal::CaptureStdout();
    AppState& state = launch();
    desktop.advance(AppDelegate::trayWaitLimit - 1ms);
    EXPECT_EQ(state.settingsWindow(), nullptr) << "a panel may still be starting";
    desktop.advance(1ms);
    const std::string output = testing::internal::GetCapturedStdout();
    ASSERT_NE(state.settingsWindow(), nullptr);
    EXPECT_TRUE(state.settingsWindow()->isVisible());
    EXPECT_NE(output.find("No system tray is available"), std::string::npos) << output;
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1);
}

TEST_F(AppStateTest, TrayThatComesUpSoonAfterLaunchIsWaitedFor) {
    trayAvailable = false;
    testing::internal::CaptureStdout();
    AppState& state = launch();
    desktop.advance(1s);
    trayAvailable = true;
    desktop.advance(10s);
    EXPECT_EQ(state.settingsWindow(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(AppStateTest, TaskbarPolicyFollowsShowInDockForEveryWindow) {
    AppState& state = launch();
    EXPECT_EQ(state.listedInTaskbar(), false);
    state.showSettingsWindow();
    EXPECT_EQ(taskbar.listed(state.settingsWindow()), false);

    settings.setShowInDock(true);
    EXPECT_EQ(taskbar.listed(state.settingsWindow()), true);
    state.showSetupWizard();
    EXPECT_EQ(taskbar.listed(state.setupWizardWindow()), true);

    settings.setShowInDock(false);
    EXPECT_EQ(taskbar.listed(state.settingsWindow()), false);
    EXPECT_EQ(taskbar.listed(state.setupWizardWindow()), false);
}

TEST_F(AppStateTest, AutoRaiseFollowsItsOwnSettingWhateverIsEnabledSays) {
    settings.setIsEnabled(false);
    AppState& state = launch();
    EXPECT_FALSE(state.autoRaiseManager().isStarted());

    settings.setAutoRaiseEnabled(true);
    EXPECT_TRUE(state.autoRaiseManager().isStarted());
    EXPECT_EQ(desktop.pointerMonitorCount(), 1u);
    settings.setAutoRaiseEnabled(false);
    EXPECT_FALSE(state.autoRaiseManager().isStarted());
    EXPECT_EQ(desktop.pointerMonitorCount(), 0u);
}

TEST_F(AppStateTest, TerminationEndsTheGestureInProgressAndPutsItsChangesBack) {
    constexpr std::int32_t pid = 1000;
    constexpr auto enhancedUI = DragSession::enhancedUserInterfaceAttribute;
    settings.setAutoRaiseEnabled(true);
    settings.setMagneticsEnabled(false);
    const std::uint32_t window = desktop.addWindow(FakeWindowSpec::at({100, 100, 400, 300}, pid));
    desktop.setApplicationAttribute(pid, enhancedUI, true);
    AppState& state = launch();

    desktop.movePointer({200, 200});
    desktop.pressModifiers(ModifierFlag::control | ModifierFlag::command);
    desktop.movePointer({260, 230});
    desktop.advance(20ms);
    ASSERT_TRUE(state.eventTapManager().dragSession().isDragging());
    ASSERT_EQ(desktop.frameOf(window).x, 160);
    ASSERT_EQ(desktop.applicationAttributeValue(pid, enhancedUI), false);

    delegate->applicationWillTerminate();
    desktop.runPendingQueueWork();
    EXPECT_FALSE(state.eventTapManager().dragSession().isDragging());
    EXPECT_EQ(desktop.applicationAttributeValue(pid, enhancedUI), true);
    EXPECT_FALSE(desktop.hasEventTap());
    EXPECT_EQ(desktop.pointerMonitorCount(), 0u);
}

}  // namespace
}  // namespace gf::test
