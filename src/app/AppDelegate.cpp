#include "app/AppDelegate.h"

#include <iostream>

#include "app/AppState.h"

namespace gf {

AppDelegate::AppDelegate(AppState& appState, std::function<bool()> trayAvailable)
    : appState_(appState), trayAvailable_(std::move(trayAvailable)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    appState_.setup();
    Settings& settings = appState_.settings();
    // Without a tray the item cannot be reached, which is the hidden item's
    // situation: the Settings window is the way in. The wizard, on first run,
    // already is a window of its own.
    if (settings.hasCompletedSetup() && settings.showMenuBarIcon() && !trayAvailable_()) {
        trayWaited_ = std::chrono::milliseconds(0);
        trayWait_ = appState_.platform().mainThread.scheduleRepeating(trayCheckPeriod,
                                                                      [this] { checkForTray(); });
    }
}

void AppDelegate::checkForTray() {
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
    appState_.showSettingsWindow();
}

void AppDelegate::applicationWillTerminate() {
    trayWait_.reset();
    appState_.stopEngine();
}

}  // namespace gf
