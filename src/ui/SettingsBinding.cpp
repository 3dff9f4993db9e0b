#include "ui/SettingsBinding.h"

namespace gf {

std::unique_ptr<QCheckBox> makeSettingsToggle(const QString& label, Settings& settings,
                                              BoolProperty property) {
    auto toggle = std::make_unique<QCheckBox>(label);
    toggle->setChecked((settings.*property.read)());
    // clicked, not toggled: only the user's switch is written, so showing a change made elsewhere
    // cannot echo it back.
    QObject::connect(toggle.get(), &QCheckBox::clicked, &settings,
                     [&settings, property](bool checked) { (settings.*property.write)(checked); });
    QObject::connect(&settings, property.changed, toggle.get(),
                     [box = toggle.get()](bool value) { box->setChecked(value); });
    return toggle;
}

void enableWhile(QWidget& widget, Settings& settings, BoolProperty property) {
    widget.setEnabled((settings.*property.read)());
    QObject::connect(&settings, property.changed, &widget,
                     [w = &widget](bool value) { w->setEnabled(value); });
}

}  // namespace gf
