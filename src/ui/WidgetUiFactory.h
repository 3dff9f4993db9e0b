#pragma once

#include "app/UiFactory.h"

namespace gf {

// The Qt Widgets views behind AppState's windows and tray menu.
class WidgetUiFactory final : public UiFactory {
  public:
    std::unique_ptr<QWidget> createSettingsView(AppState& appState) override;
    std::unique_ptr<QWidget> createSetupWizardView(AppState& appState) override;
    std::unique_ptr<QMenu> createStatusBarMenu(AppState& appState) override;
};

}  // namespace gf
