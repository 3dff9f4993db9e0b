#pragma once

#include <functional>

namespace gf {

class AppState;

// Receives the two moments of the program's life that matter to the engine:
// launching has finished (start-up decision) and the program is about to
// end (stop the engine, putting back what a gesture in progress changed).
class AppDelegate {
  public:
    // trayAvailable answers whether the desktop has a tray for the item.
    AppDelegate(AppState& appState, std::function<bool()> trayAvailable);

    void applicationDidFinishLaunching();
    void applicationWillTerminate();

  private:
    AppState& appState_;
    std::function<bool()> trayAvailable_;
};

}  // namespace gf
