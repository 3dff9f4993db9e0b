#include <QFile>
#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include "UiTestFixture.h"
#include "app/LoginItem.h"
#include "app/TaskbarPresence.h"
#include "ui/GeneralSettingsView.h"

namespace gf::test {
namespace {

class GeneralSettingsViewTest : public UiTest {
  protected:
    GeneralSettingsView& view() {
        if (view_ == nullptr) {
            view_ = std::make_unique<GeneralSettingsView>(settings(), appState());
        }
        return *view_;
    }

    // Types into the delay field and finishes editing as pressing Return does.
    void typeDelay(const QString& text) {
        DelayField& field = view().delayField();
        field.setText(text);
        emit field.editingFinished();
    }

    QAbstractButton* confirmationButton(const QString& text) {
        QMessageBox* box = view().hideIconConfirmation();
        if (box == nullptr) {
            return nullptr;
        }
        for (QAbstractButton* button : box->buttons()) {
            if (button->text() == text) {
                return button;
            }
        }
        return nullptr;
    }

    std::unique_ptr<GeneralSettingsView> view_;
};

TEST_F(GeneralSettingsViewTest, AutoRaiseControlsFollowEnableAutoRaise) {
    settings().setAutoRaiseEnabled(false);
    GeneralSettingsView& v = view();

    EXPECT_TRUE(v.autoRaiseToggle().isEnabled());
    EXPECT_TRUE(v.delayCaption().isEnabled());
    EXPECT_TRUE(v.delayUnit().isEnabled());
    EXPECT_FALSE(v.delaySlider().isEnabled());
    EXPECT_FALSE(v.delayField().isEnabled());
    EXPECT_FALSE(v.allWindowsToggle().isEnabled());
    EXPECT_FALSE(v.autoRaisePicker().isEnabled());
    // The other sections do not depend on it.
    EXPECT_TRUE(v.movePicker().isEnabled());
    EXPECT_TRUE(v.bringToFrontToggle().isEnabled());
    EXPECT_TRUE(v.startAtLoginToggle().isEnabled());

    v.autoRaiseToggle().click();
    EXPECT_TRUE(settings().autoRaiseEnabled());
    EXPECT_TRUE(v.delaySlider().isEnabled());
    EXPECT_TRUE(v.delayField().isEnabled());
    EXPECT_TRUE(v.allWindowsToggle().isEnabled());
    EXPECT_TRUE(v.autoRaisePicker().isEnabled());

    // Switched off elsewhere (the tray, another window): the tab follows.
    settings().setAutoRaiseEnabled(false);
    EXPECT_FALSE(v.autoRaiseToggle().isChecked());
    EXPECT_FALSE(v.delaySlider().isEnabled());
}

TEST_F(GeneralSettingsViewTest, ControlsWriteTheirOwnPreferenceAndShowChangesMadeElsewhere) {
    GeneralSettingsView& v = view();
    v.resizePicker().checkBox(ModifierKey::shift()).click();
    EXPECT_EQ(
        settings().resizeModifiers(),
        (ModifierKeySet{ModifierKey::control(), ModifierKey::option(), ModifierKey::shift()}));
    EXPECT_EQ(settings().moveModifiers(),
              (ModifierKeySet{ModifierKey::control(), ModifierKey::command()}));

    ASSERT_TRUE(v.bringToFrontToggle().isChecked());
    v.bringToFrontToggle().click();
    EXPECT_FALSE(settings().bringToFrontOnManipulate());
    v.bottomRightToggle().click();
    EXPECT_TRUE(settings().resizeFromBottomRightOnly());

    settings().setAutoRaiseAllWindows(true);
    EXPECT_TRUE(v.allWindowsToggle().isChecked());

    // The values persist as they are assigned: a fresh read of the file has them.
    ASSERT_TRUE(QFile::copy(settingsPath(), settingsPath() + QStringLiteral(".copy")));
    Settings fromDisk(settingsPath() + QStringLiteral(".copy"));
    EXPECT_FALSE(fromDisk.bringToFrontOnManipulate());
    EXPECT_TRUE(fromDisk.resizeFromBottomRightOnly());
}

TEST_F(GeneralSettingsViewTest, DelaySliderMovesInStepsOfFiveHundredthsBetweenTheBounds) {
    settings().setAutoRaiseEnabled(true);
    QSlider& slider = view().delaySlider();

    slider.setValue(slider.minimum());
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 0.05);
    slider.setValue(slider.maximum());
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 2.0);
    QTest::keyClick(&slider, Qt::Key_Right);  // already at the top
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 2.0);
    QTest::keyClick(&slider, Qt::Key_Left);
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 1.95);
    EXPECT_EQ(view().delayField().text(), QLocale().toString(1.95, 'f', 2));

    // A value typed beyond the range is kept as typed; the slider only shows the nearest end.
    typeDelay(QLocale().toString(5.5, 'f', 1));
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 5.5);
    EXPECT_EQ(slider.value(), slider.maximum());
}

TEST_F(GeneralSettingsViewTest, DelayFieldParsesInTheUsersLocaleAndIgnoresWhatDoesNotParse) {
    settings().setAutoRaiseEnabled(true);
    view().delayField().setLocale(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(view().delayField().text(), QStringLiteral("0,25"));

    typeDelay(QStringLiteral("0,7"));
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 0.7);
    EXPECT_EQ(view().delayField().text(), QStringLiteral("0,70"));
    EXPECT_EQ(view().delaySlider().value(), 14);

    // Committed as parsed, not rounded to the two digits shown.
    typeDelay(QStringLiteral("0,333"));
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 0.333);
    EXPECT_EQ(view().delayField().text(), QStringLiteral("0,33"));

    QSignalSpy changes(&settings(), &Settings::autoRaiseDelayChanged);
    for (const char* rejected : {"abc", "", "0.5", "1,2,3"}) {
        typeDelay(QString::fromLatin1(rejected));
        EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 0.333) << rejected;
        EXPECT_EQ(view().delayField().text(), QStringLiteral("0,33")) << rejected;
    }
    EXPECT_EQ(changes.count(), 0);

    view().delayField().setLocale(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(view().delayField().text(), QStringLiteral("0.33"));
    typeDelay(QStringLiteral("1.5"));
    EXPECT_DOUBLE_EQ(settings().autoRaiseDelay(), 1.5);
}

TEST_F(GeneralSettingsViewTest, HidingTheStatusMenuAsksFirstAndOnlyHideIconHidesIt) {
    QCheckBox& toggle = view().showStatusMenuToggle();
    ASSERT_TRUE(toggle.isChecked());
    QSignalSpy changes(&settings(), &Settings::showMenuBarIconChanged);

    toggle.click();
    QMessageBox* box = view().hideIconConfirmation();
    ASSERT_NE(box, nullptr);
    EXPECT_TRUE(box->isVisible());
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Hide the menu bar icon?"));
    EXPECT_EQ(box->text(), QStringLiteral("Hide the menu bar icon?"));
    EXPECT_EQ(box->informativeText(),
              QStringLiteral("To show the menu bar icon again, relaunch Glimmerfold from your "
                             "applications menu. The Settings window will open automatically."));
    ASSERT_NE(confirmationButton(QStringLiteral("Hide Icon")), nullptr);
    EXPECT_EQ(box->buttonRole(confirmationButton(QStringLiteral("Hide Icon"))),
              QMessageBox::DestructiveRole);
    ASSERT_NE(confirmationButton(QStringLiteral("Cancel")), nullptr);
    // Until the user answers, nothing is written and the toggle still shows the icon.
    EXPECT_TRUE(toggle.isChecked());
    EXPECT_TRUE(settings().showMenuBarIcon());

    confirmationButton(QStringLiteral("Cancel"))->click();
    processEvents();
    EXPECT_EQ(view().hideIconConfirmation(), nullptr);
    EXPECT_TRUE(settings().showMenuBarIcon());
    EXPECT_TRUE(toggle.isChecked());
    EXPECT_EQ(changes.count(), 0);

    toggle.click();
    confirmationButton(QStringLiteral("Hide Icon"))->click();
    processEvents();
    EXPECT_EQ(view().hideIconConfirmation(), nullptr);
    EXPECT_FALSE(settings().showMenuBarIcon());
    EXPECT_FALSE(toggle.isChecked());
    EXPECT_EQ(changes.count(), 1);

    // Showing it again needs no confirmation.
    toggle.click();
    EXPECT_EQ(view().hideIconConfirmation(), nullptr);
    EXPECT_TRUE(settings().showMenuBarIcon());

    // Closing the question without an answer (Escape, the close button) keeps the icon.
    toggle.click();
    QPointer<QMessageBox> question = view().hideIconConfirmation();
    ASSERT_FALSE(question.isNull());
    question->reject();
    processEvents();
    EXPECT_TRUE(question.isNull());
    EXPECT_TRUE(settings().showMenuBarIcon());
    EXPECT_TRUE(toggle.isChecked());
}

TEST_F(GeneralSettingsViewTest, StartAtLoginAddsAndRemovesTheAutostartEntryOnChangesOnly) {
    const QString entry = autostartEntryPath();
    settings().setStartAtLogin(true);
    view();  // opening the tab applies nothing
    EXPECT_FALSE(QFile::exists(entry));

    view().startAtLoginToggle().click();
    EXPECT_FALSE(settings().startAtLogin());
    view().startAtLoginToggle().click();
    EXPECT_TRUE(settings().startAtLogin());
    EXPECT_TRUE(QFile::exists(entry));
    view().startAtLoginToggle().click();
    EXPECT_FALSE(QFile::exists(entry));
}

class RecordingTaskbarPresence final : public TaskbarPresence {
  public:
    void setListedInTaskbar(QWidget&, bool listed) override { calls.push_back(listed); }
    std::vector<bool> calls;
};

TEST_F(GeneralSettingsViewTest, TaskbarToggleChangesTheListingOfGlimmerfoldsWindows) {
    RecordingTaskbarPresence presence;
    appState().setTaskbarPresence(&presence);
    appState().showSettingsWindow();
    presence.calls.clear();

    view().showInTaskbarToggle().click();
    EXPECT_TRUE(settings().showInDock());
    ASSERT_FALSE(presence.calls.empty());
    EXPECT_TRUE(presence.calls.back());

    view().showInTaskbarToggle().click();
    EXPECT_FALSE(settings().showInDock());
    EXPECT_FALSE(presence.calls.back());
    appState().setTaskbarPresence(nullptr);
}

}  // namespace
}  // namespace gf::test
