#pragma once

#include <QObject>
#include <QWidget>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "model/Settings.h"
#include "platform/Platform.h"
#include "platform/Timer.h"

namespace gf {

class AppWindow;
class AutoRaiseManager;
class EventTapManager;
class TaskbarPresence;
class UiFactory;
class UpdateController;

// The one application-wide state: owns the engine's two managers and the
// update controller, decides at start-up between the setup wizard and the
// engine, polls until input can be observed, and creates the Settings and
// wizard windows on demand. It follows changes of isEnabled (restarting the
// event tap), autoRaiseEnabled (restarting auto raise) and showInDock (the
// taskbar policy); values it was constructed with cause no reaction. Lives on
// the main thread.
class AppState : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool hasPermission READ hasPermission NOTIFY hasPermissionChanged)

  public:
    static constexpr std::chrono::milliseconds permissionPollPeriod{2000};
    // Started at login, Glimmerfold may come up before the panel's tray does.
    static constexpr std::chrono::milliseconds trayWaitLimit{3000};
    static constexpr std::chrono::milliseconds trayCheckPeriod{250};

    AppState(Settings& settings, Platform& platform, UiFactory& ui, QObject* parent = nullptr);
    ~AppState() override;
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    bool hasPermission() const { return hasPermission_; }
    Settings& settings() { return settings_; }
    Platform& platform() { return platform_; }
    EventTapManager& eventTapManager() { return *eventTapManager_; }
    AutoRaiseManager& autoRaiseManager() { return *autoRaiseManager_; }
    UpdateController& updaterController() { return *updaterController_; }
    UiFactory& uiFactory() { return ui_; }
    // Where the taskbar policy is carried out; without one it is only recorded.
    // Not owned; must outlive this object or be reset to nullptr.
    void setTaskbarPresence(TaskbarPresence* presence);
    // Answers whether the desktop has a tray for the item; until one is given,
    // a tray is assumed.
    void setTrayAvailability(std::function<bool()> trayAvailable);

    // The start-up decision: the wizard on first run, otherwise the engine,
    // the poll when input cannot be observed, the taskbar policy, and the
    // Settings window when the tray item is hidden or no tray comes up.
    void setup();
    void startEngine();
    // Follows a change of isEnabled.
    void restartEngine();
    // Follows a change of autoRaiseEnabled.
    void restartAutoRaise();
    void showSettingsWindow();
    void showSetupWizard();
    // One tick of the permission poll.
    void pollPermission();
    void closeSetupWizardWindow();
    void applyDockIconPolicy(bool showInDock);
    // Ends a gesture in progress (putting back what it changed) and auto raise.
    void stopEngine();

    QWidget* settingsWindow() const;
    QWidget* setupWizardWindow() const;
    bool isPollingPermission() const;
    bool isWaitingForTray() const { return trayWait_ != nullptr; }
    // The taskbar policy last applied; empty before setup applied one.
    std::optional<bool> listedInTaskbar() const { return listedInTaskbar_; }

  signals:
    void hasPermissionChanged(bool value);
    // The program should end: the wizard was closed before setup was ever
    // completed, which leaves nothing to run.
    void quitRequested();

  private:
    void observeSettings();
    void setHasPermission(bool value);
    void startPermissionPoll();
    void applyTaskbarPolicy(AppWindow& window);
    void waitForTray();
    void checkForTray();
    void handleSetupWizardClosed();

    bool hasPermission_ = false;
    Settings& settings_;
    Platform platform_;
    UiFactory& ui_;
    std::unique_ptr<EventTapManager> eventTapManager_;
    std::unique_ptr<AutoRaiseManager> autoRaiseManager_;
    std::unique_ptr<Timer> permissionTimer_;
    std::function<bool()> trayAvailable_;
    std::unique_ptr<Timer> trayWait_;
    std::chrono::milliseconds trayWaited_{0};
    std::unique_ptr<AppWindow> settingsWindow_;
    std::unique_ptr<AppWindow> setupWizardWindow_;
    std::unique_ptr<UpdateController> updaterController_;
    TaskbarPresence* taskbarPresence_ = nullptr;
    std::optional<bool> listedInTaskbar_;
};

}  // namespace gf
