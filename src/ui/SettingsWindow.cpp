#include "ui/SettingsWindow.h"

#include <QHBoxLayout>

#include "app/AppState.h"
#include "ui/AboutView.h"
#include "ui/GeneralSettingsView.h"
#include "ui/IgnoreListSettingsView.h"
#include "ui/MagneticsSettingsView.h"

namespace gf {

SettingsWindow::SettingsWindow(Settings& settings, AppState& appState, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      appState_(appState),
      sidebar_(std::make_unique<QListWidget>()) {
    setFixedSize(width, height);

    sidebar_->setFixedWidth(sidebarWidth);
    sidebar_->setSelectionMode(QAbstractItemView::SingleSelection);
    constexpr int iconSize = 18;
    sidebar_->setIconSize(QSize(iconSize, iconSize));
    sidebar_->setSpacing(2);
    sidebar_->setAccessibleName(QStringLiteral("Settings"));
    for (SettingsTab tab : allSettingsTabs) {
        const QColor selected = sidebar_->palette().color(QPalette::HighlightedText);
        sidebar_->addItem(
            std::make_unique<QListWidgetItem>(iconOf(tab, selected, iconSize), titleOf(tab))
                .release());
    }

    auto columns = std::make_unique<QHBoxLayout>();
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);
    columns->addWidget(sidebar_.get());
    auto detailColumn = std::make_unique<QVBoxLayout>();
    detailColumn->setContentsMargins(0, 0, 0, 0);
    detailColumn_ = detailColumn.get();
    columns->addLayout(detailColumn.release(), 1);
    setLayout(columns.release());

    showTab(SettingsTab::general);
    sidebar_->setCurrentRow(0);
    connect(sidebar_.get(), &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0 && static_cast<std::size_t>(row) < allSettingsTabs.size()) {
            showTab(allSettingsTabs[static_cast<std::size_t>(row)]);
        }
    });
}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::selectTab(SettingsTab tab) {
    for (std::size_t row = 0; row < allSettingsTabs.size(); ++row) {
        if (allSettingsTabs[row] == tab) {
            sidebar_->setCurrentRow(static_cast<int>(row));
        }
    }
}

std::unique_ptr<QWidget> SettingsWindow::makeView(SettingsTab tab) {
    switch (tab) {
        case SettingsTab::general:
            return std::make_unique<GeneralSettingsView>(settings_, appState_);
        case SettingsTab::magnetics:
            return std::make_unique<MagneticsSettingsView>(settings_);
        case SettingsTab::ignoreList:
            return std::make_unique<IgnoreListSettingsView>(settings_,
                                                            appState_.platform().applications);
        case SettingsTab::about:
            return std::make_unique<AboutView>();
    }
    return std::make_unique<QWidget>();
}

void SettingsWindow::showTab(SettingsTab tab) {
    selectedTab_ = tab;
    detail_ = makeView(tab);
    detailColumn_->addWidget(detail_.get());
    detail_->show();
}

}  // namespace gf
