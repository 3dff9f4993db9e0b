#include <QFile>
#include <QSignalSpy>

#include "UiTestFixture.h"
#include "ui/ModifierKeyPicker.h"
#include "ui/SettingsProperty.h"

namespace gf::test {
namespace {

const ModifierKey& fn = ModifierKey::fn();
const ModifierKey& shift = ModifierKey::shift();
const ModifierKey& control = ModifierKey::control();
const ModifierKey& option = ModifierKey::option();
const ModifierKey& command = ModifierKey::command();

using ModifierKeyPickerTest = UiTest;

TEST_F(ModifierKeyPickerTest, ShowsOneCheckboxPerKeyInTableOrderWithSymbolsAndKeyNames) {
    ModifierKeyPicker picker(QStringLiteral("Movement shortcut:"), settings(),
                             property::moveModifiers);
    const QList<QCheckBox*> boxes = picker.findChildren<QCheckBox*>();
    ASSERT_EQ(boxes.size(), 5);
    const QStringList captions{QStringLiteral("fn"), QStringLiteral("\u21E7"),
                               QStringLiteral("\u2303"), QStringLiteral("\u2325"),
                               QStringLiteral("\u2318")};
    const QStringList names{QStringLiteral("Fn"), QStringLiteral("Shift"), QStringLiteral("Ctrl"),
                            QStringLiteral("Alt"), QStringLiteral("Super")};
    picker.show();
    int previousX = -1;
    for (int i = 0; i < 5; ++i) {
        QCheckBox& box = picker.checkBox(ModifierKey::allKeys()[static_cast<std::size_t>(i)]);
        EXPECT_EQ(box.text(), captions[i]);
        EXPECT_EQ(box.toolTip(), names[i]);
        EXPECT_EQ(box.font().pointSize(), 12);
        EXPECT_GT(box.x(), previousX);
        previousX = box.x();
    }
    EXPECT_EQ(picker.label().width(), 140);
    EXPECT_TRUE(picker.label().alignment().testFlag(Qt::AlignRight));
    // The default move set is control and command.
    EXPECT_FALSE(picker.checkBox(fn).isChecked());
    EXPECT_FALSE(picker.checkBox(shift).isChecked());
    EXPECT_TRUE(picker.checkBox(control).isChecked());
    EXPECT_FALSE(picker.checkBox(option).isChecked());
    EXPECT_TRUE(picker.checkBox(command).isChecked());
}

TEST_F(ModifierKeyPickerTest, EachClickWritesTheWholeSetOnceAndFlipsOnlyItsKey) {
    ModifierKeyPicker picker(QString(), settings(), property::moveModifiers);
    QSignalSpy changes(&settings(), &Settings::moveModifiersChanged);

    picker.checkBox(shift).click();
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes.at(0).at(0).value<ModifierKeySet>(),
              (ModifierKeySet{shift, control, command}));

    picker.checkBox(command).click();
    ASSERT_EQ(changes.count(), 2);
    EXPECT_EQ(settings().moveModifiers(), (ModifierKeySet{shift, control}));

    // The file holds the last set, as a later start reads it (from a copy: QSettings caches
    // the files this process has seen).
    const QString copy = settingsPath() + QStringLiteral(".copy");
    ASSERT_TRUE(QFile::copy(settingsPath(), copy));
    Settings reread(copy);
    EXPECT_EQ(reread.moveModifiers(), (ModifierKeySet{shift, control}));
}

TEST_F(ModifierKeyPickerTest, EveryKeyCanBeSwitchedOffAndAllCanBeOn) {
    ModifierKeyPicker picker(QString(), settings(), property::resizeModifiers);
    picker.checkBox(control).click();
    picker.checkBox(option).click();
    EXPECT_TRUE(settings().resizeModifiers().isEmpty());
    for (const ModifierKey& key : ModifierKey::allKeys()) {
        EXPECT_FALSE(picker.checkBox(key).isChecked());
    }
    for (const ModifierKey& key : ModifierKey::allKeys()) {
        picker.checkBox(key).click();
    }
    EXPECT_EQ(settings().resizeModifiers(), (ModifierKeySet{fn, shift, control, option, command}));
}

TEST_F(ModifierKeyPickerTest, FollowsChangesMadeElsewhereWithoutWritingBack) {
    ModifierKeyPicker picker(QString(), settings(), property::autoRaiseModifiers);
    QSignalSpy changes(&settings(), &Settings::autoRaiseModifiersChanged);
    settings().setAutoRaiseModifiers(ModifierKeySet{option});
    EXPECT_EQ(changes.count(), 1);
    EXPECT_TRUE(picker.checkBox(option).isChecked());
    EXPECT_FALSE(picker.checkBox(command).isChecked());
    // Another picker of the same preference (the wizard's) stays in step.
    ModifierKeyPicker other(QString(), settings(), property::autoRaiseModifiers);
    other.checkBox(command).click();
    EXPECT_TRUE(picker.checkBox(command).isChecked());
    EXPECT_EQ(changes.count(), 2);
}

}  // namespace
}  // namespace gf::test
