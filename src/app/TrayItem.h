#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <memory>

#include "model/Settings.h"

namespace gf {

class AppState;
class UiFactory;

// The tray item titled "Glimmerfold", present while showMenuBarIcon is true,
// whose menu comes from the views. Either mouse button opens the menu, as a
// click on a menu-bar item would.
class TrayItem : public QObject {
    Q_OBJECT

  public:
    TrayItem(Settings& settings, AppState& appState, UiFactory& ui, QObject* parent = nullptr);
    ~TrayItem() override;

    // Whether the desktop has a tray to put the item in.
    static bool isTrayAvailable();

    bool isShown() const { return icon_->isVisible(); }
    QMenu& menu() { return *menu_; }
    QSystemTrayIcon& icon() { return *icon_; }

  private:
    void followSetting();
    void handleActivation(QSystemTrayIcon::ActivationReason reason);

    Settings& settings_;
    std::unique_ptr<QMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> icon_;
};

}  // namespace gf
