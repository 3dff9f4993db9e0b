#pragma once

#include <QCheckBox>
#include <QString>
#include <QWidget>
#include <memory>

#include "ui/SettingsProperty.h"

namespace gf {

// A checkbox that shows a Boolean preference and assigns it when the user switches it. A change
// made elsewhere (the tray menu, the wizard) is shown at once; showing it writes nothing back.
std::unique_ptr<QCheckBox> makeSettingsToggle(const QString& label, Settings& settings,
                                              BoolProperty property);

// Keeps `widget` enabled exactly while the Boolean preference is true.
void enableWhile(QWidget& widget, Settings& settings, BoolProperty property);

}  // namespace gf
