#pragma once

#include <QListWidget>
#include <QVBoxLayout>
#include <QWidget>
#include <memory>

#include "model/Settings.h"
#include "ui/SettingsTab.h"

namespace gf {

class AppState;

// The Settings window's content: a 180-point sidebar of the tabs and the selected tab's view
// beside it, 650 x 450 in all. A tab's view is made afresh each time the tab is selected, so it
// starts from its initial state (no selection, no open question).
class SettingsWindow : public QWidget {
    Q_OBJECT

  public:
    static constexpr int sidebarWidth = 180;
    static constexpr int width = 650;
    static constexpr int height = 450;

    SettingsWindow(Settings& settings, AppState& appState, QWidget* parent = nullptr);
    ~SettingsWindow() override;

    SettingsTab selectedTab() const { return selectedTab_; }
    void selectTab(SettingsTab tab);

    QListWidget& sidebar() { return *sidebar_; }
    // The selected tab's view.
    QWidget& detailView() { return *detail_; }

  private:
    std::unique_ptr<QWidget> makeView(SettingsTab tab);
    void showTab(SettingsTab tab);

    Settings& settings_;
    AppState& appState_;
    SettingsTab selectedTab_ = SettingsTab::general;
    std::unique_ptr<QListWidget> sidebar_;
    std::unique_ptr<QWidget> detail_;
    QVBoxLayout* detailColumn_ = nullptr;  // owned by the window's layout
};

}  // namespace gf
