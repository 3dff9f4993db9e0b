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
// its trailing edge, then one checkbox per key in table order (fn, shift, control, option,
// command), captioned with the key's symbol. Each click writes the whole changed set back in one
// assignment, so Settings stores and announces it once.
class ModifierKeyPicker : public QWidget {
    Q_OBJECT

  public:
    static constexpr int labelColumnWidth = 140;
    static constexpr int symbolPointSize = 12;

    ModifierKeyPicker(const QString& label, Settings& settings, ModifierKeySetProperty property,
                      QWidget* parent = nullptr);
    ~ModifierKeyPicker() override;

    // The checkbox of `key`, for layout and tests.
    QCheckBox& checkBox(const ModifierKey& key);
    QLabel& label() { return *label_; }

    // How this platform's keyboards label the key ("Super" for command, "Alt" for option...).
    static QString keyboardName(const ModifierKey& key);

  private:
    void toggle(const ModifierKey& key);
    void showKeys(const ModifierKeySet& set);

    Settings& settings_;
    ModifierKeySetProperty property_;
    std::unique_ptr<QLabel> label_;
    std::array<std::unique_ptr<QCheckBox>, 5> boxes_;
};

}  // namespace gf
