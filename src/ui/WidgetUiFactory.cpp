#include "ui/WidgetUiFactory.h"

#include "app/AppState.h"
#include "ui/SettingsWindow.h"
#include "ui/SetupWizardView.h"
#include "ui/StatusBarMenu.h"

namespace gf {

std::unique_ptr<QWidget> WidgetUiFactory::createSettingsView(AppState& appState) {
    return std::make_unique<SettingsWindow>(appState.settings(), appState);
}

std::unique_ptr<QWidget> WidgetUiFactory::createSetupWizardView(AppState& appState) {
    return std::make_unique<SetupWizardView>(appState.settings(), appState);
}

std::unique_ptr<QMenu> WidgetUiFactory::createStatusBarMenu(AppState& appState) {
    return std::make_unique<StatusBarMenu>(appState.settings(), appState);
}

}  // namespace gf
