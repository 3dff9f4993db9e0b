#include "app/AppDelegate.h"

#include <iostream>

#include "app/AppState.h"

namespace gf {

AppDelegate::AppDelegate(AppState& appState, std::function<bool()> trayAvailable)
    : appState_(appState), trayAvailable_(std::move(trayAvailable)) {}

void AppDelegate::applicationDidFinishLaunching() {
    appState_.setup();
    Settings& settings = appState_.settings();
    // Without a tray the item cannot be reached, which is the hidden item's
    // situation: the Settings window is the way in. The wizard, on first run,
    // already is a window of its own.
    if (settings.hasCompletedSetup() && settings.showMenuBarIcon() && !trayAvailable_()) {
        std::cout << "No system tray is available on this desktop, so Glimmerfold shows its "
                     "Settings window instead of a tray icon."
                  << std::endl;
        appState_.showSettingsWindow();
    }
}

void AppDelegate::applicationWillTerminate() {
    appState_.stopEngine();
}

}  // namespace gf
