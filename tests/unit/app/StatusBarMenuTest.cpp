#include "ui/StatusBarMenu.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "TestUiFactory.h"
#include "app/AppState.h"
#include "fake/FakeDesktop.h"
#include "model/DebugLog.h"

namespace gf::test {
namespace {

class StatusBarMenuTest : public ::testing::Test {
  protected:
    StatusBarMenuTest() {
        setDebugLogPath(dir.filePath("glimmerfold.log").toStdString());
        settings.setHasCompletedSetup(true);
    }

    // What the user sees, top to bottom; separators as "---".
    QStringList entries() const {
        QStringList texts;
        for (const QAction* action : menu->actions()) {
            if (!action->isVisible()) {
                continue;
            }
            texts << (action->isSeparator() ? QStringLiteral("---") : action->text());
        }
        return texts;
    }

    // What the tray does each time it opens the menu.
    void open() { emit menu->aboutToShow(); }

    QTemporaryDir dir;
    Settings settings{dir.filePath("glimmerfold.conf")};
    FakeDesktop desktop;
    Platform platform = desktop.platform();
    TestUiFactory ui;
    AppState appState{settings, platform, ui};
    std::unique_ptr<StatusBarMenu> menu;
};

TEST_F(StatusBarMenuTest, BothGrantsPresentGivesNineEntriesWithoutTheWayToTheWizard) {
    menu = std::make_unique<StatusBarMenu>(settings, appState);
    EXPECT_EQ(entries(), (QStringList{"Glimmerfold: Running", "---", "Accessibility: Granted",
                                      "Input Monitoring: Granted", "---", "Settings...",
                                      "Check for Updates...", "---", "Quit Glimmerfold"}));
    EXPECT_EQ(menu->settingsItem().shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Comma));
    EXPECT_EQ(menu->quitItem().shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
}

TEST_F(StatusBarMenuTest, MissingGrantIsShownAndCheckPermissionsAddedAtTheNextOpening) {
    menu = std::make_unique<StatusBarMenu>(settings, appState);
    desktop.grants().setInputMonitoringGranted(false);
    EXPECT_EQ(entries().at(3), "Input Monitoring: Granted") << "not polled while open";

    open();
    EXPECT_EQ(entries(),
              (QStringList{"Glimmerfold: Running", "---", "Accessibility: Granted",
                           "Input Monitoring: Missing", "Check Permissions...", "---",
                           "Settings...", "Check for Updates...", "---", "Quit Glimmerfold"}));

    desktop.grants().setInputMonitoringGranted(true);
    desktop.grants().setAccessibilityGranted(false);
    open();
    EXPECT_EQ(entries().mid(2, 3),
              (QStringList{"Accessibility: Missing", "Input Monitoring: Granted",
                           "Check Permissions..."}));

    open();  // every action still works after the menu was opened again
    menu->checkPermissionsItem().trigger();
    ASSERT_NE(appState.setupWizardWindow(), nullptr);
    EXPECT_TRUE(appState.setupWizardWindow()->isVisible());
}

TEST_F(StatusBarMenuTest, RunningItemSwitchesAndStoresIsEnabled) {
    menu = std::make_unique<StatusBarMenu>(settings, appState);
    QAction& running = menu->runningItem();
    EXPECT_TRUE(running.isCheckable());
    EXPECT_TRUE(running.isChecked());

    running.trigger();
    EXPECT_FALSE(settings.isEnabled());
    EXPECT_EQ(running.text(), "Glimmerfold: Stopped");
    EXPECT_FALSE(running.isChecked());
    EXPECT_FALSE(Settings(settings.filePath()).isEnabled()) << "written through at once";

    running.trigger();
    EXPECT_TRUE(Settings(settings.filePath()).isEnabled());
    EXPECT_EQ(running.text(), "Glimmerfold: Running");

    settings.setIsEnabled(false);  // changed elsewhere, e.g. in the General tab
    EXPECT_EQ(running.text(), "Glimmerfold: Stopped");
}

TEST_F(StatusBarMenuTest, SettingsItemOpensTheOneSettingsWindow) {
    menu = std::make_unique<StatusBarMenu>(settings, appState);
    menu->settingsItem().trigger();
    QWidget* window = appState.settingsWindow();
    ASSERT_NE(window, nullptr);
    menu->settingsItem().trigger();
    EXPECT_EQ(appState.settingsWindow(), window);
    EXPECT_EQ(ui.settingsViewsMade, 1);
}

}  // namespace
}  // namespace gf::test
