#include "app/AppDelegate.h"

#include "app/AppState.h"

namespace gf {

AppDelegate::AppDelegate(AppState& appState) : appState_(appState) {}

void AppDelegate::applicationDidFinishLaunching() {
    appState_.setup();
}

void AppDelegate::applicationWillTerminate() {
    appState_.stopEngine();
}

}  // namespace gf
