#include "app/TrayItem.h"

#include <QCursor>

#include "app/AppState.h"
#include "app/UiFactory.h"

namespace gf {

TrayItem::TrayItem(Settings& settings, AppState& appState, UiFactory& ui, QObject* parent)
    : QObject(parent),
      settings_(settings),
      menu_(ui.createStatusBarMenu(appState)),
      icon_(std::make_unique<QSystemTrayIcon>()) {
    icon_->setIcon(
        QIcon::fromTheme(QStringLiteral("glimmerfold-tray"),
                         QIcon(QStringLiteral(":/glimmerfold/icons/glimmerfold-tray.svg"))));
    icon_->setToolTip(QStringLiteral("Glimmerfold"));
    icon_->setContextMenu(menu_.get());
    connect(icon_.get(), &QSystemTrayIcon::activated, this, &TrayItem::handleActivation);
    connect(&settings_, &Settings::showMenuBarIconChanged, this, &TrayItem::followSetting);
    followSetting();
}

TrayItem::~TrayItem() {
    icon_->hide();
}

bool TrayItem::isTrayAvailable() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayItem::followSetting() {
    icon_->setVisible(settings_.showMenuBarIcon());
}

void TrayItem::handleActivation(QSystemTrayIcon::ActivationReason reason) {
    // The right button opens the context menu by itself.
    if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::MiddleClick) {
        menu_->popup(QCursor::pos());
    }
}

}  // namespace gf
