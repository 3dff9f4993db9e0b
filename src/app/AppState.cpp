#include "app/AppState.h"

#include <QApplication>
#include <iostream>

#include "app/AppWindow.h"
#include "app/BuildInfo.h"
#include "app/Permissions.h"
#include "app/UiFactory.h"
#include "app/UpdateController.h"
#include "engine/AutoRaiseManager.h"
#include "engine/EventTapManager.h"
#include "platform/TaskbarPresence.h"

namespace gf {

namespace {

const AppWindow::Style settingsWindowStyle{QStringLiteral("Glimmerfold"), QSize(650, 450)};
const AppWindow::Style setupWizardStyle{QStringLiteral("Welcome to Glimmerfold"), QSize(500, 400)};

}  // namespace

AppState::AppState(Settings& settings, Platform& platform, UiFactory& ui, QObject* parent)
    : QObject(parent),
      settings_(settings),
      platform_(platform),
      ui_(ui),
      eventTapManager_(std::make_unique<EventTapManager>(settings_, platform_)),
      autoRaiseManager_(std::make_unique<AutoRaiseManager>(settings_, platform_)),
      updaterController_(
          std::make_unique<UpdateController>(UpdateController::defaultFeedUrl(), shortVersion())) {
    observeSettings();
}

AppState::~AppState() {
    permissionTimer_.reset();
    trayWait_.reset();
    stopEngine();
}

void AppState::observeSettings() {
    connect(&settings_, &Settings::isEnabledChanged, this, [this] { restartEngine(); });
    connect(&settings_, &Settings::autoRaiseEnabledChanged, this, [this] { restartAutoRaise(); });
    connect(&settings_, &Settings::showInDockChanged, this,
            [this](bool showInDock) { applyDockIconPolicy(showInDock); });
}

void AppState::setTaskbarPresence(TaskbarPresence* presence) {
    taskbarPresence_ = presence;
}

void AppState::setTrayAvailability(std::function<bool()> trayAvailable) {
    trayAvailable_ = std::move(trayAvailable);
}

void AppState::setup() {
    if (!settings_.hasCompletedSetup()) {
        showSetupWizard();
        return;
    }
    setHasPermission(true);
    startEngine();
    if (settings_.isEnabled() && !eventTapManager_->hasEventTap()) {
        setHasPermission(false);
        requestPermissions(platform_.grants);
        openInputMonitoringSettings(platform_.grants);
        startPermissionPoll();
    }
    applyDockIconPolicy(settings_.showInDock());
    if (!settings_.showMenuBarIcon()) {
        showSettingsWindow();
    } else {
        waitForTray();
    }
}

// Without a tray the item cannot be reached, which is the hidden item's situation: the Settings
// window is the way in. Finishing the wizard comes here too, as launching does.
void AppState::waitForTray() {
    if (!trayAvailable_ || trayAvailable_() || isWaitingForTray()) {
        return;
    }
    trayWaited_ = std::chrono::milliseconds(0);
    trayWait_ = platform_.mainThread.scheduleRepeating(trayCheckPeriod, [this] { checkForTray(); });
}

void AppState::checkForTray() {
    trayWaited_ += trayCheckPeriod;
    if (trayAvailable_()) {
        trayWait_.reset();
        return;
    }
    if (trayWaited_ < trayWaitLimit) {
        return;
    }
    trayWait_.reset();
    std::cout << "No system tray is available on this desktop, so Glimmerfold shows its "
                 "Settings window instead of a tray icon."
              << std::endl;
    showSettingsWindow();
}

void AppState::startEngine() {
    if (settings_.isEnabled()) {
        eventTapManager_->start();
    }
    if (settings_.autoRaiseEnabled()) {
        autoRaiseManager_->start();
    }
}

void AppState::restartEngine() {
    eventTapManager_->stop();
    if (settings_.isEnabled()) {
        eventTapManager_->start();
        setHasPermission(eventTapManager_->hasEventTap());
    }
}

void AppState::restartAutoRaise() {
    autoRaiseManager_->stop();
    if (settings_.autoRaiseEnabled()) {
        autoRaiseManager_->start();
    }
}

void AppState::stopEngine() {
    eventTapManager_->stop();
    autoRaiseManager_->stop();
}

void AppState::startPermissionPoll() {
    // A poll that is already running keeps going: it stops by itself once a tap exists.
    if (isPollingPermission()) {
        return;
    }
    permissionTimer_ =
        platform_.mainThread.scheduleRepeating(permissionPollPeriod, [this] { pollPermission(); });
}

void AppState::pollPermission() {
    eventTapManager_->start();
    if (!eventTapManager_->hasEventTap()) {
        return;
    }
    permissionTimer_.reset();
    setHasPermission(true);
    if (settings_.autoRaiseEnabled()) {
        autoRaiseManager_->start();
    }
}

bool AppState::isPollingPermission() const {
    return permissionTimer_ != nullptr && permissionTimer_->isActive();
}

void AppState::setHasPermission(bool value) {
    if (hasPermission_ == value) {
        return;
    }
    hasPermission_ = value;
    emit hasPermissionChanged(value);
}

void AppState::showSettingsWindow() {
    if (!settingsWindow_) {
        settingsWindow_ =
            std::make_unique<AppWindow>(settingsWindowStyle, ui_.createSettingsView(*this));
        settingsWindow_->centerOnScreen();
    }
    applyTaskbarPolicy(*settingsWindow_);
    settingsWindow_->present();
}

void AppState::showSetupWizard() {
    if (!setupWizardWindow_) {
        setupWizardWindow_ =
            std::make_unique<AppWindow>(setupWizardStyle, ui_.createSetupWizardView(*this));
        setupWizardWindow_->centerOnScreen();
        connect(setupWizardWindow_.get(), &AppWindow::closed, this,
                &AppState::handleSetupWizardClosed);
    }
    applyTaskbarPolicy(*setupWizardWindow_);
    setupWizardWindow_->present();
}

void AppState::closeSetupWizardWindow() {
    if (!setupWizardWindow_) {
        return;
    }
    setupWizardWindow_->hide();
    // Usually called from a button inside the wizard, whose click is still
    // being delivered: the window may only go once control is back in the loop.
    setupWizardWindow_.release()->deleteLater();
}

// Before setup was ever completed nothing runs but the wizard, so closing it ends the program.
// Afterwards only the wizard goes; reopened, it starts again from its first page.
void AppState::handleSetupWizardClosed() {
    closeSetupWizardWindow();
    if (!settings_.hasCompletedSetup()) {
        emit quitRequested();
    }
}

QWidget* AppState::settingsWindow() const {
    return settingsWindow_.get();
}

QWidget* AppState::setupWizardWindow() const {
    return setupWizardWindow_.get();
}

void AppState::applyDockIconPolicy(bool showInDock) {
    listedInTaskbar_ = showInDock;
    for (AppWindow* window : {settingsWindow_.get(), setupWizardWindow_.get()}) {
        if (window != nullptr) {
            applyTaskbarPolicy(*window);
        }
    }
}

void AppState::applyTaskbarPolicy(AppWindow& window) {
    // Before setup has chosen, windows are listed like any application's.
    if (taskbarPresence_ != nullptr) {
        taskbarPresence_->setListedInTaskbar(window, listedInTaskbar_.value_or(true));
    }
}

}  // namespace gf
