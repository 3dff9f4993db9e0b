#include "ui/SettingsWindow.h"

#include <QMessageBox>
#include <QPointer>

#include "UiTestFixture.h"
#include "ui/AboutView.h"
#include "ui/GeneralSettingsView.h"
#include "ui/IgnoreListSettingsView.h"
#include "ui/MagneticsSettingsView.h"

namespace gf::test {
namespace {

using SettingsWindowTest = UiTest;

TEST_F(SettingsWindowTest, OpensOnGeneralAndMakesEachTabAfreshWhenSelected) {
    SettingsWindow window(settings(), appState());
    window.show();
    EXPECT_EQ(window.sidebar().currentRow(), 0);
    for (int row = 0; row < window.sidebar().count(); ++row) {
        EXPECT_FALSE(window.sidebar().item(row)->icon().isNull()) << row;
    }
    auto* general = qobject_cast<GeneralSettingsView*>(&window.detailView());
    ASSERT_NE(general, nullptr);
    general->showStatusMenuToggle().click();
    QPointer<QMessageBox> question = general->hideIconConfirmation();
    ASSERT_FALSE(question.isNull());
    QPointer<QWidget> firstGeneral = general;

    window.sidebar().setCurrentRow(1);
    EXPECT_EQ(window.selectedTab(), SettingsTab::magnetics);
    EXPECT_NE(qobject_cast<MagneticsSettingsView*>(&window.detailView()), nullptr);
    EXPECT_TRUE(firstGeneral.isNull());
    EXPECT_TRUE(question.isNull());
    EXPECT_TRUE(settings().showMenuBarIcon());

    window.selectTab(SettingsTab::ignoreList);
    EXPECT_NE(qobject_cast<IgnoreListSettingsView*>(&window.detailView()), nullptr);
    window.selectTab(SettingsTab::about);
    EXPECT_NE(qobject_cast<AboutView*>(&window.detailView()), nullptr);
    window.selectTab(SettingsTab::general);
    general = qobject_cast<GeneralSettingsView*>(&window.detailView());
    ASSERT_NE(general, nullptr);
    EXPECT_EQ(general->hideIconConfirmation(), nullptr);
    EXPECT_TRUE(general->showStatusMenuToggle().isChecked());
}

}  // namespace
}  // namespace gf::test
