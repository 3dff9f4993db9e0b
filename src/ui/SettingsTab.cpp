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

std::optional<SettingsTab> settingsTabFromTitle(const QString& title) {
    for (SettingsTab tab : allSettingsTabs) {
        if (titleOf(tab) == title) {
            return tab;
        }
    }
    return std::nullopt;
}

QIcon iconOf(SettingsTab tab) {
    switch (tab) {
        case SettingsTab::general:
            return uiIcon(QStringLiteral("general"));
        case SettingsTab::magnetics:
            return uiIcon(QStringLiteral("magnetics"));
        case SettingsTab::ignoreList:
            return uiIcon(QStringLiteral("ignore-list"));
        case SettingsTab::about:
            return uiIcon(QStringLiteral("about"));
    }
    return {};
}

}  // namespace gf
