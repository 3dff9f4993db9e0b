#pragma once

#include <QColor>
#include <QIcon>
#include <QString>
#include <array>

namespace gf {

// The tabs of the Settings window, in sidebar order; each is known by its title.
enum class SettingsTab { general, magnetics, ignoreList, about };

inline constexpr std::array<SettingsTab, 4> allSettingsTabs{
    SettingsTab::general, SettingsTab::magnetics, SettingsTab::ignoreList, SettingsTab::about};

// "General", "Magnetics", "Ignore List", "About".
QString titleOf(SettingsTab tab);
// The tab's sidebar icon at `size`, drawn in `selectedColor` while its row is selected.
QIcon iconOf(SettingsTab tab, const QColor& selectedColor, int size);

}  // namespace gf
