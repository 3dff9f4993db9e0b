#include "app/AppState.h"

#include <QPointer>
#include <QSignalSpy>
#include <map>

#include "UiTestFixture.h"
#include "UrlRecorder.h"
#include "app/AppDelegate.h"
#include "engine/AutoRaiseManager.h"
#include "engine/DragSession.h"
#include "engine/EventTapManager.h"
#include "model/DebugLog.h"
#include "platform/TaskbarPresence.h"
#include "ui/SettingsWindow.h"
#include "ui/SetupWizardView.h"
#include "ui/WizardPage.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class RecordingTaskbar final : public TaskbarPresence {
  public:
    void setListedInTaskbar(QWidget& window, bool listed) override { listed_[&window] = listed; }
    std::optional<bool> listed(QWidget* window) const {
        return listed_.contains(window) ? std::optional(listed_.at(window)) : std::nullopt;
    }

  private:
    std::map<QWidget*, bool> listed_;
};

class AppStateTest : public UiTest {
  protected:
    AppStateTest() {
        setDebugLogPath(settingsPath().toStdString() + ".log");
        settings().setHasCompletedSetup(true);
    }
    ~AppStateTest() override { appState().setTaskbarPresence(nullptr); }

    AppState& launch() {  // AppState reacts to changes only: arrange the settings first
        appState().setTaskbarPresence(&taskbar);
        appState().setTrayAvailability([this] { return trayAvailable; });
        delegate = std::make_unique<AppDelegate>(appState());
        delegate->applicationDidFinishLaunching();
        return appState();
    }

    int tapFailures() const {
        return static_cast<int>(fileContents(settingsPath() + ".log").count("FAILED to create"));
    }
    bool nothingRequested() {
        return desktop().accessibilityRequests == 0 && desktop().inputMonitoringRequests == 0 &&
               desktop().whereToGrantShown == 0 && opened.urls().isEmpty();
    }

    RecordingTaskbar taskbar;
    UrlRecorder opened{{QStringLiteral("file")}};
    bool trayAvailable = true;
    std::unique_ptr<AppDelegate> delegate;
};

// Closing the wizard is the way out of a first run that cannot go on (no grants under Wayland).
TEST_F(AppStateTest, FirstRunShowsOnlyTheWizardWhoseCloseQuitsUntilFinishingItStartsTheEngine) {
    settings().setHasCompletedSetup(false);
    trayAvailable = false;
    testing::internal::CaptureStdout();
    AppState& state = launch();
    QSignalSpy quit(&state, &AppState::quitRequested);
    QPointer<QWidget> wizard = state.setupWizardWindow();
    ASSERT_FALSE(wizard.isNull());
    EXPECT_TRUE(wizard->isVisible());
    desktop().advance(10s);
    EXPECT_EQ(state.settingsWindow(), nullptr) << "not even without a tray";
    EXPECT_EQ(desktop().tapsCreated, 0u);
    EXPECT_TRUE(nothingRequested());
    EXPECT_FALSE(state.isPollingPermission());
    EXPECT_FALSE(state.hasPermission());
    EXPECT_FALSE(state.listedInTaskbar().has_value()) << "taskbar policy untouched on first run";

    EXPECT_TRUE(wizard->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    EXPECT_TRUE(wizard->close());
    EXPECT_EQ(quit.count(), 1);
    EXPECT_EQ(state.setupWizardWindow(), nullptr);
    EXPECT_FALSE(settings().hasCompletedSetup());
    processEvents();
    EXPECT_TRUE(wizard.isNull());

    // Finished: the engine starts, and as there is no tray the Settings window opens, saying why.
    state.showSetupWizard();
    wizard = state.setupWizardWindow();
    auto* view = wizard->findChild<SetupWizardView*>();
    ASSERT_NE(view, nullptr);
    for (int step = 0; step < 4; ++step) {
        qobject_cast<WizardPage*>(&view->page())->button().click();
    }
    ASSERT_TRUE(settings().hasCompletedSetup());
    EXPECT_EQ(state.setupWizardWindow(), nullptr);
    EXPECT_TRUE(desktop().hasEventTap());
    EXPECT_TRUE(state.hasPermission());
    processEvents();
    EXPECT_TRUE(wizard.isNull());
    desktop().advance(AppState::trayWaitLimit - 1ms);
    EXPECT_EQ(state.settingsWindow(), nullptr) << "a panel may still be starting";
    desktop().advance(1ms);
    EXPECT_TRUE(state.settingsWindow() && state.settingsWindow()->isVisible());
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find("No system tray is available"), std::string::npos) << output;
    EXPECT_EQ(lineCount(output), 1);

    state.showSetupWizard();  // "Check Permissions..."
    ASSERT_NE(state.setupWizardWindow(), nullptr);
    EXPECT_TRUE(state.setupWizardWindow()->close());
    EXPECT_EQ(quit.count(), 1) << "after setup, closing the wizard leaves the program running";
    EXPECT_EQ(state.setupWizardWindow(), nullptr);
}

TEST_F(AppStateTest, EngineSwitchedOffRequestsNothingUntilSwitchedOn) {
    settings().setIsEnabled(false);
    AppState& state = launch();
    desktop().advance(10s);
    EXPECT_TRUE(state.hasPermission());
    EXPECT_EQ(desktop().tapsCreated, 0u);
    EXPECT_TRUE(nothingRequested());
    EXPECT_FALSE(state.isPollingPermission());
    EXPECT_FALSE(state.autoRaiseManager().isStarted());

    settings().setIsEnabled(true);
    EXPECT_TRUE(desktop().hasEventTap());
    settings().setIsEnabled(false);
    EXPECT_FALSE(desktop().hasEventTap());
    EXPECT_TRUE(state.hasPermission()) << "switching off says nothing about the grants";

    settings().setAutoRaiseEnabled(true);  // its own setting, whatever isEnabled says
    EXPECT_EQ(desktop().pointerMonitorCount(), 1u);
    settings().setAutoRaiseEnabled(false);
    EXPECT_EQ(desktop().pointerMonitorCount(), 0u);

    desktop().tapCreationFails = true;
    QSignalSpy changes(&state, &AppState::hasPermissionChanged);
    settings().setIsEnabled(true);
    EXPECT_FALSE(state.hasPermission());
    EXPECT_EQ(changes.count(), 1);
    EXPECT_FALSE(state.isPollingPermission()) << "only the start-up decision polls";
    EXPECT_TRUE(nothingRequested());
}

TEST_F(AppStateTest, TapThatCannotBeMadeAsksOnceAndPollsEveryTwoSecondsUntilItCan) {
    desktop().tapCreationFails = true;
    settings().setAutoRaiseEnabled(true);
    QSignalSpy changes(&appState(), &AppState::hasPermissionChanged);
    appState().setup();

    EXPECT_FALSE(appState().hasPermission());
    EXPECT_EQ(desktop().accessibilityRequests, 1);
    EXPECT_EQ(desktop().inputMonitoringRequests, 1);
    EXPECT_EQ(desktop().whereToGrantShown, 1);
    ASSERT_EQ(opened.urls().size(), 1) << "the help page about X11 sessions opens";
    EXPECT_TRUE(opened.urls().front().toLocalFile().endsWith("x11-session.html"));
    EXPECT_TRUE(appState().autoRaiseManager().isStarted()) << "auto raise does not wait";
    EXPECT_EQ(tapFailures(), 1);

    desktop().advance(2s);
    EXPECT_EQ(tapFailures(), 2);
    desktop().tapCreationFails = false;
    desktop().advance(1999ms);
    EXPECT_FALSE(desktop().hasEventTap());
    desktop().advance(1ms);
    EXPECT_TRUE(desktop().hasEventTap());
    EXPECT_TRUE(appState().hasPermission());
    EXPECT_FALSE(appState().isPollingPermission());
    ASSERT_GE(changes.count(), 1);
    EXPECT_TRUE(changes.back().at(0).toBool());

    desktop().advance(10s);
    appState().setup();  // again, as after the wizard was reopened, while the tap runs
    EXPECT_FALSE(appState().isPollingPermission());
    EXPECT_EQ(desktop().tapsCreated, 1u) << "the poll stopped with its first success";
    EXPECT_EQ(tapFailures(), 2);
    EXPECT_EQ(desktop().accessibilityRequests, 1);
}

TEST_F(AppStateTest, SettingsWindowIsMadeOnceAndKeptAfterClosingAndEveryWindowFollowsShowInDock) {
    settings().setShowMenuBarIcon(false);
    AppState& state = launch();
    QWidget* window = state.settingsWindow();
    ASSERT_NE(window, nullptr) << "a hidden tray item leaves the Settings window as the way in";
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->minimumSize(), window->maximumSize()) << "not resizable";
    auto* view = window->findChild<SettingsWindow*>();
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(window->isVisible());
    state.showSettingsWindow();
    EXPECT_EQ(state.settingsWindow(), window);
    EXPECT_EQ(window->findChild<SettingsWindow*>(), view);
    EXPECT_TRUE(window->isVisible());

    EXPECT_EQ(state.listedInTaskbar(), false);
    EXPECT_EQ(taskbar.listed(window), false);
    settings().setShowInDock(true);
    EXPECT_EQ(taskbar.listed(window), true);
    state.showSetupWizard();
    EXPECT_EQ(taskbar.listed(state.setupWizardWindow()), true);
    settings().setShowInDock(false);
    EXPECT_EQ(taskbar.listed(window), false);
    EXPECT_EQ(taskbar.listed(state.setupWizardWindow()), false);
}

TEST_F(AppStateTest, TrayThatComesUpSoonAfterLaunchIsWaitedFor) {
    trayAvailable = false;
    testing::internal::CaptureStdout();
    AppState& state = launch();
    desktop().advance(1s);
    EXPECT_TRUE(state.isWaitingForTray());
    trayAvailable = true;
    desktop().advance(10s);
    EXPECT_EQ(state.settingsWindow(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(AppStateTest, TerminationEndsTheGestureInProgressAndPutsItsChangesBack) {
    constexpr std::int32_t pid = 1000;
    constexpr auto enhancedUI = DragSession::enhancedUserInterfaceAttribute;
    settings().setAutoRaiseEnabled(true);
    settings().setMagneticsEnabled(false);
    const auto window = desktop().addWindow(FakeDesktop::Window::at({100, 100, 400, 300}, pid));
    desktop().setAttribute(pid, enhancedUI, true);
    AppState& state = launch();

    desktop().movePointer({200, 200});
    desktop().pressModifiers(ModifierFlag::control | ModifierFlag::command);
    desktop().movePointer({260, 230});
    desktop().advance(20ms);
    ASSERT_TRUE(state.eventTapManager().dragSession().isDragging());
    ASSERT_EQ(desktop().frameOf(window).x, 160);
    ASSERT_EQ(desktop().applicationAttribute(pid, enhancedUI), false);

    delegate->applicationWillTerminate();
    desktop().runPendingQueueWork();
    EXPECT_FALSE(state.eventTapManager().dragSession().isDragging());
    EXPECT_EQ(desktop().applicationAttribute(pid, enhancedUI), true);
    EXPECT_FALSE(desktop().hasEventTap());
    EXPECT_EQ(desktop().pointerMonitorCount(), 0u);
}

}  // namespace
}  // namespace gf::test
