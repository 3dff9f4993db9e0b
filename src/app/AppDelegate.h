#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/Timer.h"

namespace gf {

class AppState;

// Receives the two moments of the program's life that matter to the engine:
// launching has finished (start-up decision) and the program is about to
// end (stop the engine, putting back what a gesture in progress changed).
class AppDelegate {
  public:
    // Started at login, Glimmerfold may come up before the panel's tray does.
    static constexpr std::chrono::milliseconds trayWaitLimit{3000};
    static constexpr std::chrono::milliseconds trayCheckPeriod{250};

    // trayAvailable answers whether the desktop has a tray for the item.
    AppDelegate(AppState& appState, std::function<bool()> trayAvailable);
    ~AppDelegate();

    void applicationDidFinishLaunching();
    void applicationWillTerminate();

  private:
    void checkForTray();

    AppState& appState_;
    std::function<bool()> trayAvailable_;
    std::unique_ptr<Timer> trayWait_;
    std::chrono::milliseconds trayWaited_{0};
};

}  // namespace gf
