#include "ui/GeneralSettingsView.h"

#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include "UiTestFixture.h"
#include "app/LoginItem.h"

namespace gf::test {
namespace {

class GeneralSettingsViewTest : public UiTest {
  protected:
    void typeDelay(const QString& text) {
        view.delayField().setText(text);
        emit view.delayField().editingFinished();
    }

    QAbstractButton* confirmationButton(const QString& text) {
        const auto buttons = view.hideIconConfirmation()->buttons();
        const auto found = std::ranges::find(buttons, text, &QAbstractButton::text);
        return found == buttons.end() ? nullptr : *found;
    }

    GeneralSettingsView view{settings(), appState()};
};

TEST_F(GeneralSettingsViewTest,
       ControlsWriteTheirOwnPreferenceFollowChangesMadeElsewhereAndAutoRaise) {
    const QList<QWidget*> dependent{&view.delaySlider(), &view.delayField(),
                                    &view.allWindowsToggle(), &view.autoRaisePicker()};
    const auto expectDependentEnabled = [&](bool enabled) {
        for (QWidget* control : dependent) {
            EXPECT_EQ(control->isEnabled(), enabled) << control->metaObject()->className();
        }
    };
    expectDependentEnabled(false);
    EXPECT_TRUE(view.delayCaption().isEnabled());
    EXPECT_TRUE(view.movePicker().isEnabled());
    EXPECT_TRUE(view.bringToFrontToggle().isEnabled());

    view.autoRaiseToggle().click();
    EXPECT_TRUE(settings().autoRaiseEnabled());
    expectDependentEnabled(true);
    // Switched off elsewhere (the tray, another window): the tab follows.
    settings().setAutoRaiseEnabled(false);
    EXPECT_FALSE(view.autoRaiseToggle().isChecked());
    EXPECT_FALSE(view.delaySlider().isEnabled());

    view.resizePicker().checkBox(ModifierKey::shift()).click();
    EXPECT_TRUE(settings().resizeModifiers().contains(ModifierKey::shift()));
    EXPECT_FALSE(settings().moveModifiers().contains(ModifierKey::shift()));
    view.bringToFrontToggle().click();
    EXPECT_FALSE(settings().bringToFrontOnManipulate());
    view.bottomRightToggle().click();
    EXPECT_TRUE(settings().resizeFromBottomRightOnly());
    view.showInTaskbarToggle().click();
    EXPECT_TRUE(settings().showInDock());
    settings().setAutoRaiseAllWindows(true);
    EXPECT_TRUE(view.allWindowsToggle().isChecked());

    // Start at login changes the autostart entry on changes only, wherever they come from.
    const QString entry = autostartEntryPath();
    view.startAtLoginToggle().click();
    EXPECT_TRUE(QFile::exists(entry));
    view.startAtLoginToggle().click();
    EXPECT_FALSE(QFile::exists(entry));
    settings().setStartAtLogin(true);
    EXPECT_TRUE(QFile::exists(entry));
    QFile::remove(entry);
    GeneralSettingsView reopened(settings(), appState());  // opening the tab applies nothing
    EXPECT_FALSE(QFile::exists(entry));
}

TEST_F(GeneralSettingsViewTest, DelaySliderMovesInStepsOfFiveHundredthsBetweenTheBounds) {
    settings().setAutoRaiseEnabled(true);
    QSlider& slider = view.delaySlider();
    slider.setValue(slider.minimum());
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 0.05);
    slider.setValue(slider.maximum());
    QTest::keyClick(&slider, Qt::Key_Left);  // a step below the top
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 1.95);
    EXPECT_EQ(view.delayField().text(), QLocale().toString(1.95, 'f', 2));
    // A value typed beyond the range is kept as typed; the slider only shows the nearest end.
    typeDelay(QLocale().toString(5.5, 'f', 1));
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 5.5);
    EXPECT_EQ(slider.value(), slider.maximum());
}

TEST_F(GeneralSettingsViewTest, DelayFieldParsesInTheUsersLocaleAndIgnoresWhatDoesNotParse) {
    settings().setAutoRaiseEnabled(true);
    view.delayField().setLocale(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(view.delayField().text(), QStringLiteral("0,25"));
    typeDelay(QStringLiteral("0,7"));
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 0.7);
    EXPECT_EQ(view.delaySlider().value(), 14);
    typeDelay(QStringLiteral("0,333"));  // committed as parsed, not rounded to the two shown
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 0.333);
    EXPECT_EQ(view.delayField().text(), QStringLiteral("0,33"));

    QSignalSpy changes(&settings(), &Settings::autoRaiseDelayChanged);
    for (const char* rejected : {"abc", "", "0.5", "1,2,3"}) {
        typeDelay(QString::fromLatin1(rejected));
        EXPECT_EQ(view.delayField().text(), QStringLiteral("0,33")) << rejected;
    }
    EXPECT_EQ(changes.count(), 0);
    view.delayField().setLocale(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(view.delayField().text(), QStringLiteral("0.33"));
}

TEST_F(GeneralSettingsViewTest, HidingTheStatusMenuAsksFirstAndOnlyHideIconHidesIt) {
    QCheckBox& toggle = view.showStatusMenuToggle();
    QSignalSpy changes(&settings(), &Settings::showMenuBarIconChanged);
    toggle.click();
    ASSERT_NE(view.hideIconConfirmation(), nullptr);
    EXPECT_TRUE(view.hideIconConfirmation()->isVisible());
    // Until the user answers, nothing is written and the toggle still shows the icon.
    EXPECT_TRUE(toggle.isChecked());
    EXPECT_TRUE(settings().showMenuBarIcon());

    confirmationButton(QStringLiteral("Cancel"))->click();
    processEvents();
    EXPECT_EQ(view.hideIconConfirmation(), nullptr);
    EXPECT_TRUE(toggle.isChecked());
    EXPECT_EQ(changes.count(), 0);

    // Closing the question without an answer (Escape, the close button) keeps the icon too.
    toggle.click();
    QPointer<QMessageBox> question = view.hideIconConfirmation();
    question->reject();
    processEvents();
    EXPECT_TRUE(question.isNull());
    EXPECT_TRUE(settings().showMenuBarIcon());

    toggle.click();
    confirmationButton(QStringLiteral("Hide Icon"))->click();
    processEvents();
    EXPECT_EQ(view.hideIconConfirmation(), nullptr);
    EXPECT_FALSE(settings().showMenuBarIcon());
    EXPECT_FALSE(toggle.isChecked());
    EXPECT_EQ(changes.count(), 1);
    toggle.click();
    EXPECT_EQ(view.hideIconConfirmation(), nullptr);
    EXPECT_TRUE(settings().showMenuBarIcon());
}

}  // namespace
}  // namespace gf::test
