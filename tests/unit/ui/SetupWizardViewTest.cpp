#include "UiTestFixture.h"
#include "UrlRecorder.h"
#include "platform/x11/X11GrantService.h"
#include "ui/ModifierKeyPicker.h"
#include "ui/PermissionsStepContent.h"
#include "ui/SetupWizardView.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class SetupWizardViewTest : public UiTest {
  protected:
    SetupWizardView& wizard() {
        if (wizard_ == nullptr) {
            wizard_ = std::make_unique<SetupWizardView>(settings(), appState());
            wizard_->show();
        }
        return *wizard_;
    }

    WizardPage& page() { return *qobject_cast<WizardPage*>(&wizard().page()); }

    PermissionsStepContent& permissionsPage() {
        if (wizard().step() == 0) {
            page().button().click();
        }
        auto* permissions = qobject_cast<PermissionsStepContent*>(&wizard().page());
        EXPECT_NE(permissions, nullptr);
        return *permissions;
    }

    void setGrants(bool accessibility, bool inputMonitoring) {
        desktop().accessibilityGranted = accessibility;
        desktop().inputMonitoringGranted = inputMonitoring;
    }

    std::unique_ptr<SetupWizardView> wizard_;
    UrlRecorder opened{{QStringLiteral("file")}};
};

TEST_F(SetupWizardViewTest, WalksForwardThroughTheFourPagesPollingOnlyOnThePermissionsPage) {
    EXPECT_EQ(wizard().step(), 0);
    EXPECT_EQ(desktop().scheduledCount(), 0u);
    PermissionsStepContent& permissions = permissionsPage();
    // Both grants are there already: the page says so and lets the user go on at once.
    EXPECT_EQ(permissions.titleLabel().text(), QStringLiteral("Permissions Granted!"));
    EXPECT_TRUE(permissions.isPolling());
    EXPECT_EQ(desktop().scheduledCount(), 1u);
    wizard().hide();  // the window went away
    EXPECT_FALSE(permissions.isPolling());
    EXPECT_EQ(desktop().scheduledCount(), 0u);
    wizard().show();
    EXPECT_TRUE(permissions.isPolling());

    permissions.button().click();
    EXPECT_EQ(wizard().step(), 2);
    EXPECT_EQ(desktop().scheduledCount(), 0u);
    const QList<ModifierKeyPicker*> pickers = page().findChildren<ModifierKeyPicker*>();
    ASSERT_EQ(pickers.size(), 2);
    pickers[0]->checkBox(ModifierKey::control()).click();
    pickers[0]->checkBox(ModifierKey::command()).click();
    pickers[1]->checkBox(ModifierKey::shift()).click();
    EXPECT_TRUE(settings().moveModifiers().isEmpty());  // accepted as it is
    EXPECT_TRUE(settings().resizeModifiers().contains(ModifierKey::shift()));
    page().button().click();
    EXPECT_EQ(wizard().step(), 3);
}

TEST_F(SetupWizardViewTest, ContinueWorksOnlyWithBothGrantsWhichThePollPicksUp) {
    setGrants(false, false);
    PermissionsStepContent& permissions = permissionsPage();
    EXPECT_EQ(permissions.titleLabel().text(), QStringLiteral("Grant Permissions"));
    EXPECT_FALSE(permissions.button().isEnabled());
    EXPECT_TRUE(permissions.accessibilityRow().isVisible());
    EXPECT_TRUE(permissions.accessibilityRow().grantButton().isEnabled());

    // Accessibility is given; the page notices at the next tick, not before.
    setGrants(true, false);
    desktop().advance(1900ms);
    EXPECT_FALSE(permissions.accessibilityRow().isGranted());
    desktop().advance(100ms);
    EXPECT_TRUE(permissions.accessibilityRow().isGranted());
    EXPECT_FALSE(permissions.accessibilityRow().grantButton().isEnabled());
    EXPECT_FALSE(permissions.button().isEnabled());

    setGrants(true, true);
    desktop().advance(2s);
    EXPECT_TRUE(permissions.button().isEnabled());
    EXPECT_EQ(permissions.titleLabel().text(), QStringLiteral("Permissions Granted!"));
    EXPECT_FALSE(permissions.accessibilityRow().isVisible());

    setGrants(true, false);
    desktop().advance(2s);
    EXPECT_FALSE(permissions.button().isEnabled());
    EXPECT_EQ(permissions.titleLabel().text(), QStringLiteral("Grant Permissions"));
}

TEST_F(SetupWizardViewTest, GrantAccessAsksTheDesktopAndShowsWhereToGrantWhileMissing) {
    setGrants(false, false);
    PermissionsStepContent& permissions = permissionsPage();
    FakeDesktop& grants = desktop();
    permissions.accessibilityRow().grantButton().click();
    EXPECT_EQ(grants.accessibilityRequests, 1);
    EXPECT_EQ(grants.whereToGrantShown, 1);
    const int inputRequests = grants.inputMonitoringRequests;
    permissions.inputMonitoringRow().grantButton().click();
    EXPECT_EQ(grants.accessibilityRequests, 1);
    EXPECT_EQ(grants.inputMonitoringRequests, inputRequests + 1);
    EXPECT_EQ(grants.whereToGrantShown, 2);
    EXPECT_EQ(opened.urls().size(), 2) << "each opens the page about X11 sessions";
    // Granted or not, the rows change only when the poll looks again.
    grants.accessibilityGranted = true;
    permissions.accessibilityRow().grantButton().click();
    EXPECT_FALSE(permissions.accessibilityRow().isGranted());
}

TEST_F(SetupWizardViewTest, WhereGrantsCannotBeHadThePageSaysWhyAndWhatToDo) {
    X11GrantService wayland(true, sessionOfType("wayland"));
    PermissionsStepContent page({}, wayland, desktop());
    page.show();
    const QString reason = QString::fromStdString(wayland.whyUnavailable());
    ASSERT_FALSE(page.explanations().empty());
    EXPECT_EQ(page.explanations().back()->text(), reason);
    EXPECT_TRUE(page.explanations().back()->isVisible());
    EXPECT_EQ(page.accessibilityRow().grantButton().toolTip(), reason);
    EXPECT_EQ(page.inputMonitoringRow().grantButton().toolTip(), reason);
    EXPECT_FALSE(page.button().isEnabled());

    X11GrantService x11(true, sessionOfType("x11"));
    PermissionsStepContent granted({}, x11, desktop());
    EXPECT_EQ(granted.titleLabel().text(), QStringLiteral("Permissions Granted!"));
    for (const auto& explanation : granted.explanations()) {
        EXPECT_FALSE(explanation->text().contains("X11")) << explanation->text().toStdString();
    }
}

}  // namespace
}  // namespace gf::test
