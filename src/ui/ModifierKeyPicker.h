#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QString>
#include <QWidget>
#include <array>
#include <memory>

#include "model/ModifierKey.h"
#include "ui/SettingsProperty.h"

namespace gf {

// One row of checkboxes editing a modifier-key preference: a 140-point label column aligned to
// its trailing edge, then one checkbox per key X reports, captioned with the key's name as Linux
// keyboards and shortcut editors write it (Shift, Ctrl, Alt, Super). Each click writes the whole
// changed set back in one assignment, so Settings stores and announces it once.
class ModifierKeyPicker : public QWidget {
    Q_OBJECT

  public:
    static constexpr int labelColumnWidth = 140;

    ModifierKeyPicker(const QString& label, Settings& settings, ModifierKeySetProperty property,
                      QWidget* parent = nullptr);
    ~ModifierKeyPicker() override;

    // The checkbox of `key`, which must be one of ModifierKey::availableKeys().
    QCheckBox& checkBox(const ModifierKey& key);
    QLabel& label() { return *label_; }

  private:
    void toggle(const ModifierKey& key);
    void showKeys(const ModifierKeySet& set);

    Settings& settings_;
    ModifierKeySetProperty property_;
    std::unique_ptr<QLabel> label_;
    std::array<std::unique_ptr<QCheckBox>, ModifierKey::availableCount> boxes_;
};

}  // namespace gf
