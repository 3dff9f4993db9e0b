#include <QMessageBox>
#include <QPointer>

#include "UiTestFixture.h"
#include "app/BuildInfo.h"
#include "ui/AboutView.h"
#include "ui/GeneralSettingsView.h"
#include "ui/IgnoreListSettingsView.h"
#include "ui/MagneticsSettingsView.h"
#include "ui/SettingsWindow.h"

namespace gf::test {
namespace {

TEST(SettingsTabTest, TitlesAreTheRawValuesInSidebarOrder) {
    QStringList titles;
    for (SettingsTab tab : allSettingsTabs) {
        titles << titleOf(tab);
        EXPECT_EQ(settingsTabFromTitle(titleOf(tab)), tab);
        EXPECT_FALSE(iconOf(tab, Qt::white, 18).isNull());
    }
    EXPECT_EQ(titles, (QStringList{QStringLiteral("General"), QStringLiteral("Magnetics"),
                                   QStringLiteral("Ignore List"), QStringLiteral("About")}));
    EXPECT_EQ(settingsTabFromTitle(QStringLiteral("general")), std::nullopt);
    EXPECT_EQ(settingsTabFromTitle(QStringLiteral("Advanced")), std::nullopt);
}

using SettingsWindowTest = UiTest;

TEST_F(SettingsWindowTest, OpensAtFixedSizeWithGeneralSelected) {
    SettingsWindow window(settings(), appState());
    EXPECT_EQ(window.minimumSize(), QSize(650, 450));
    EXPECT_EQ(window.maximumSize(), QSize(650, 450));
    EXPECT_EQ(window.sidebar().width(), 180);
    EXPECT_EQ(window.sidebar().count(), 4);
    EXPECT_EQ(window.sidebar().item(2)->text(), QStringLiteral("Ignore List"));
    EXPECT_EQ(window.selectedTab(), SettingsTab::general);
    EXPECT_EQ(window.sidebar().currentRow(), 0);
    EXPECT_NE(qobject_cast<GeneralSettingsView*>(&window.detailView()), nullptr);
}

TEST_F(SettingsWindowTest, EachTabIsMadeAfreshWhenSelected) {
    SettingsWindow window(settings(), appState());
    window.show();
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

TEST(AboutViewTest, ShowsNameVersionAndDescription) {
    AboutView view;
    EXPECT_EQ(view.nameLabel().text(), QStringLiteral("Glimmerfold"));
    EXPECT_EQ(view.versionLabel().text(), QStringLiteral("Version ") + shortVersion() +
                                              QStringLiteral(" (") + buildNumber() +
                                              QStringLiteral(")"));
    EXPECT_EQ(view.descriptionLabel().text(),
              QStringLiteral("Move and resize windows with modifier keys."));
    EXPECT_EQ(view.iconLabel().size(), QSize(96, 96));
    EXPECT_FALSE(view.iconLabel().pixmap().isNull());
}

}  // namespace
}  // namespace gf::test
