#pragma once

#include <QAction>
#include <QMenu>
#include <QWidgetAction>
#include <memory>

#include "model/Settings.h"

namespace gf {

class AppState;

// The tray item's menu: the running switch, the two grant lines, the way to
// the setup wizard while a grant is missing, Settings, the update check and
// Quit. The grants are read again each time the menu opens, never while it
// stays open.
class StatusBarMenu : public QMenu {
    Q_OBJECT

  public:
    StatusBarMenu(Settings& settings, AppState& appState, QWidget* parent = nullptr);
    ~StatusBarMenu() override;

    bool axGranted() const { return axGranted_; }
    bool inputGranted() const { return inputGranted_; }

    // Reads both grants and lays the items out again.
    void refresh();

    QAction& runningItem() { return *running_; }
    QAction& checkPermissionsItem() { return *checkPermissions_; }
    QAction& settingsItem() { return *settingsItem_; }
    QAction& checkForUpdatesItem() { return *checkForUpdates_; }
    QAction& quitItem() { return *quit_; }

  private:
    void rebuild();
    void updateRunningItem();
    static void showGrant(QWidgetAction& line, const QString& name, bool granted);

    Settings& settings_;
    AppState& appState_;
    bool axGranted_ = false;
    bool inputGranted_ = false;

    std::unique_ptr<QAction> running_;
    std::unique_ptr<QAction> firstSeparator_;
    std::unique_ptr<QWidgetAction> accessibilityLine_;
    std::unique_ptr<QWidgetAction> inputMonitoringLine_;
    std::unique_ptr<QAction> checkPermissions_;
    std::unique_ptr<QAction> secondSeparator_;
    std::unique_ptr<QAction> settingsItem_;
    std::unique_ptr<QAction> checkForUpdates_;
    std::unique_ptr<QAction> thirdSeparator_;
    std::unique_ptr<QAction> quit_;
};

}  // namespace gf
