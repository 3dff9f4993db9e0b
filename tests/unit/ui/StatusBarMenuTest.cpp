#include "ui/StatusBarMenu.h"

#include "UiTestFixture.h"

namespace gf::test {
namespace {

class StatusBarMenuTest : public UiTest {
  protected:
    // What the tray shows each time it opens the menu, top to bottom; separators as "---".
    QStringList open() {
        emit menu.aboutToShow();
        QStringList texts;
        for (const QAction* action : menu.actions()) {
            if (action->isVisible()) {
                texts << (action->isSeparator() ? QStringLiteral("---") : action->text());
            }
        }
        return texts;
    }

    StatusBarMenu menu{settings(), appState()};
};

TEST_F(StatusBarMenuTest, GrantLinesFollowTheGrantsAtEachOpeningAndEveryItemWorks) {
    const QStringList common{"---", "Settings...", "Check for Updates...", "---",
                             "Quit Glimmerfold"};
    EXPECT_EQ(open(), QStringList({"Glimmerfold: Running", "---", "Accessibility: Granted",
                                   "Input Monitoring: Granted"}) +
                          common);

    desktop().inputMonitoringGranted = false;
    EXPECT_EQ(open(), QStringList({"Glimmerfold: Running", "---", "Accessibility: Granted",
                                   "Input Monitoring: Missing", "Check Permissions..."}) +
                          common);
    desktop().inputMonitoringGranted = true;
    desktop().accessibilityGranted = false;
    EXPECT_EQ(open().mid(2, 3), QStringList({"Accessibility: Missing", "Input Monitoring: Granted",
                                             "Check Permissions..."}));

    open();  // every action still works after the menu was opened again
    menu.checkPermissionsItem().trigger();
    ASSERT_NE(appState().setupWizardWindow(), nullptr);
    EXPECT_TRUE(appState().setupWizardWindow()->isVisible());
    menu.settingsItem().trigger();
    ASSERT_NE(appState().settingsWindow(), nullptr);
    EXPECT_TRUE(appState().settingsWindow()->isVisible());

    QAction& running = menu.runningItem();
    EXPECT_TRUE(running.isChecked());
    running.trigger();
    EXPECT_FALSE(running.isChecked());
    EXPECT_EQ(running.text(), "Glimmerfold: Stopped");
    EXPECT_FALSE(Settings(settings().filePath()).isEnabled()) << "written through at once";
    running.trigger();
    EXPECT_TRUE(Settings(settings().filePath()).isEnabled());
    EXPECT_EQ(running.text(), "Glimmerfold: Running");

    settings().setIsEnabled(false);  // changed elsewhere, e.g. in the General tab
    EXPECT_EQ(running.text(), "Glimmerfold: Stopped");
}

}  // namespace
}  // namespace gf::test
