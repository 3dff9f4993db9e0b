#include "ui/ModifierKeyPicker.h"

#include <QFile>
#include <QSignalSpy>

#include "UiTestFixture.h"
#include "ui/SettingsProperty.h"

namespace gf::test {
namespace {

const ModifierKey& shift = ModifierKey::shift();
const ModifierKey& control = ModifierKey::control();
const ModifierKey& option = ModifierKey::option();
const ModifierKey& command = ModifierKey::command();

using ModifierKeyPickerTest = UiTest;

TEST_F(ModifierKeyPickerTest, OneBoxPerKeyInTableOrderEachClickWritingTheWholeSetOnce) {
    ModifierKeyPicker picker(QString(), settings(), property::moveModifiers);
    picker.show();
    const QStringList names{"Fn", "Shift", "Ctrl", "Alt", "Super"};
    int previousX = -1;
    for (std::size_t i = 0; i < ModifierKey::allKeys().size(); ++i) {
        QCheckBox& box = picker.checkBox(ModifierKey::allKeys()[i]);
        EXPECT_EQ(box.toolTip(), names[static_cast<int>(i)]);
        EXPECT_GT(box.x(), previousX);
        previousX = box.x();
        // The default move set is control and command.
        EXPECT_EQ(box.isChecked(), i == 2 || i == 4) << i;
    }

    QSignalSpy changes(&settings(), &Settings::moveModifiersChanged);
    picker.checkBox(shift).click();
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes.at(0).at(0).value<ModifierKeySet>(),
              (ModifierKeySet{shift, control, command}));
    for (const ModifierKey* key : {&shift, &control, &command}) {
        picker.checkBox(*key).click();
    }
    EXPECT_EQ(changes.count(), 4);
    EXPECT_TRUE(settings().moveModifiers().isEmpty()) << "every key can be switched off";
    // The file holds the last set, as a later start reads it (from a copy: QSettings caches the
    // files this process has seen).
    const QString copy = settingsPath() + QStringLiteral(".copy");
    ASSERT_TRUE(QFile::copy(settingsPath(), copy));
    EXPECT_TRUE(Settings(copy).moveModifiers().isEmpty());
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
