#pragma once

namespace gf {

class AppState;

// Receives the two moments of the program's life that matter to the engine:
// launching has finished (start-up decision) and the program is about to
// end (stop the engine, putting back what a gesture in progress changed).
class AppDelegate {
  public:
    explicit AppDelegate(AppState& appState);

    void applicationDidFinishLaunching();
    void applicationWillTerminate();

  private:
    AppState& appState_;
};

}  // namespace gf
