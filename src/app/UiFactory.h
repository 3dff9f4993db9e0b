#pragma once

#include <QMenu>
#include <QWidget>
#include <memory>

namespace gf {

class AppState;

// How the application reaches its views without depending on them: the widget
// layer implements this, the program's entry hands it to AppState.
class UiFactory {
  public:
    virtual ~UiFactory() = default;

    // Root view of the Settings window (650 x 450, General tab selected).
    virtual std::unique_ptr<QWidget> createSettingsView(AppState& appState) = 0;
    // Root view of the setup wizard (500 x 400, at its first step).
    virtual std::unique_ptr<QWidget> createSetupWizardView(AppState& appState) = 0;
    // The tray item's menu; it reads the grants again each time it opens.
    virtual std::unique_ptr<QMenu> createStatusBarMenu(AppState& appState) = 0;
};

}  // namespace gf
