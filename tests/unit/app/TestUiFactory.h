#pragma once

#include "app/UiFactory.h"

namespace gf::test {

// Stand-in views: a label naming the view, and an empty menu. Counts what it made.
class TestUiFactory final : public UiFactory {
  public:
    std::unique_ptr<QWidget> createSettingsView(AppState& appState) override;
    std::unique_ptr<QWidget> createSetupWizardView(AppState& appState) override;
    std::unique_ptr<QMenu> createStatusBarMenu(AppState& appState) override;

    int settingsViewsMade = 0;
    int setupWizardViewsMade = 0;
};

}  // namespace gf::test
