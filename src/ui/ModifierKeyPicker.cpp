#include "ui/ModifierKeyPicker.h"

#include <QHBoxLayout>
#include <cassert>

namespace gf {

namespace {

std::size_t indexOf(const ModifierKey& key) {
    const auto& keys = ModifierKey::availableKeys();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i] == key) {
            return i;
        }
    }
    assert(false && "only keys X reports have a checkbox");
    return 0;
}

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

ModifierKeyPicker::ModifierKeyPicker(const QString& label, Settings& settings,
                                     ModifierKeySetProperty property, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      property_(property),
      label_(std::make_unique<QLabel>(label)) {
    auto layout = std::make_unique<QHBoxLayout>();
    layout->setContentsMargins(0, 0, 0, 0);
    label_->setFixedWidth(labelColumnWidth);
    label_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout->addWidget(label_.get(), 0, Qt::AlignVCenter);

    for (const ModifierKey& key : ModifierKey::availableKeys()) {
        auto box = std::make_unique<QCheckBox>(toQString(key.symbol));
        QObject::connect(box.get(), &QCheckBox::clicked, this, [this, &key] { toggle(key); });
        layout->addWidget(box.get(), 0, Qt::AlignVCenter);
        boxes_[indexOf(key)] = std::move(box);
    }
    layout->addStretch(1);
    setLayout(layout.release());

    showKeys((settings_.*property_.read)());
    connect(&settings_, property_.changed, this, &ModifierKeyPicker::showKeys);
}

ModifierKeyPicker::~ModifierKeyPicker() = default;

QCheckBox& ModifierKeyPicker::checkBox(const ModifierKey& key) {
    return *boxes_[indexOf(key)];
}

// The stored set decides, not the checkbox's new state, so a click always flips exactly one key
// of what Settings holds now.
void ModifierKeyPicker::toggle(const ModifierKey& key) {
    ModifierKeySet set = (settings_.*property_.read)();
    if (set.contains(key)) {
        set.remove(key);
    } else {
        set.insert(key);
    }
    (settings_.*property_.write)(set);
    showKeys((settings_.*property_.read)());
}

void ModifierKeyPicker::showKeys(const ModifierKeySet& set) {
    for (const ModifierKey& key : ModifierKey::availableKeys()) {
        boxes_[indexOf(key)]->setChecked(set.contains(key));
    }
}

}  // namespace gf
