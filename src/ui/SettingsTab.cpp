#include "ui/SettingsTab.h"

#include "ui/UiIcons.h"

namespace gf {

QString titleOf(SettingsTab tab) {
    switch (tab) {
        case SettingsTab::general:
            return QStringLiteral("General");
        case SettingsTab::magnetics:
            return QStringLiteral("Magnetics");
        case SettingsTab::ignoreList:
            return QStringLiteral("Ignore List");
        case SettingsTab::about:
            return QStringLiteral("About");
    }
    return {};
}

QIcon iconOf(SettingsTab tab, const QColor& selectedColor, int size) {
    switch (tab) {
        case SettingsTab::general:
            return uiListIcon(QStringLiteral("general"), selectedColor, size);
        case SettingsTab::magnetics:
            return uiListIcon(QStringLiteral("magnetics"), selectedColor, size);
        case SettingsTab::ignoreList:
            return uiListIcon(QStringLiteral("ignore-list"), selectedColor, size);
        case SettingsTab::about:
            return uiListIcon(QStringLiteral("about"), selectedColor, size);
    }
    return {};
}

}  // namespace gf
