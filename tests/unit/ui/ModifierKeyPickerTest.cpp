#include "ui/ModifierKeyPicker.h"

#include <QFile>
#include <QSignalSpy>
#include <algorithm>

#include "UiTestFixture.h"
#include "ui/SettingsProperty.h"

namespace gf::test {
namespace {

const ModifierKey& shift = ModifierKey::shift();
const ModifierKey& control = ModifierKey::control();
const ModifierKey& option = ModifierKey::option();
const ModifierKey& command = ModifierKey::command();

using ModifierKeyPickerTest = UiTest;

// X never reports fn, so it is not offered; the others go by the names Linux keyboards give them.
TEST_F(ModifierKeyPickerTest,
       OffersShiftCtrlAltSuperEachClickWritingTheWholeSetOnceAndFollowsOtherChanges) {
    ModifierKeyPicker picker(QString(), settings(), property::moveModifiers);
    picker.show();
    QList<QCheckBox*> boxes = picker.findChildren<QCheckBox*>();
    std::ranges::sort(boxes, {}, &QWidget::x);
    ASSERT_EQ(boxes.size(), 4);
    const QStringList names{"Shift", "Ctrl", "Alt", "Super"};
    for (qsizetype i = 0; i < boxes.size(); ++i) {
        EXPECT_EQ(boxes[i]->text(), names[i]);
        // The default move set is control and command.
        EXPECT_EQ(boxes[i]->isChecked(), i == 1 || i == 3) << i;
    }
    EXPECT_EQ(&picker.checkBox(command), boxes[3]);

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
    // A later start reads the last set (from a copy: QSettings caches the files it has seen).
    const QString copy = settingsPath() + QStringLiteral(".copy");
    ASSERT_TRUE(QFile::copy(settingsPath(), copy));
    EXPECT_TRUE(Settings(copy).moveModifiers().isEmpty());

    // Changes made elsewhere show without being written back; the wizard's picker stays in step.
    QSignalSpy raiseChanges(&settings(), &Settings::autoRaiseModifiersChanged);
    ModifierKeyPicker raise(QString(), settings(), property::autoRaiseModifiers);
    settings().setAutoRaiseModifiers(ModifierKeySet{option});
    EXPECT_TRUE(raise.checkBox(option).isChecked());
    EXPECT_FALSE(raise.checkBox(command).isChecked());
    ModifierKeyPicker other(QString(), settings(), property::autoRaiseModifiers);
    other.checkBox(command).click();
    EXPECT_TRUE(raise.checkBox(command).isChecked());
    EXPECT_EQ(raiseChanges.count(), 2);
}

}  // namespace
}  // namespace gf::test
