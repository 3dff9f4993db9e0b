#include "TestUiFactory.h"

#include <QLabel>

namespace gf::test {

std::unique_ptr<QWidget> TestUiFactory::createSettingsView(AppState&) {
    ++settingsViewsMade;
    return std::make_unique<QLabel>(QStringLiteral("settings view"));
}

std::unique_ptr<QWidget> TestUiFactory::createSetupWizardView(AppState&) {
    ++setupWizardViewsMade;
    return std::make_unique<QLabel>(QStringLiteral("setup wizard view"));
}

std::unique_ptr<QMenu> TestUiFactory::createStatusBarMenu(AppState&) {
    return std::make_unique<QMenu>();
}

}  // namespace gf::test
