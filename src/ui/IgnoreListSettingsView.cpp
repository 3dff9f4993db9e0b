#include "ui/IgnoreListSettingsView.h"

#include <QHBoxLayout>
#include <QSignalBlocker>

#include "ui/ApplicationIconImage.h"
#include "ui/ApplicationRow.h"
#include "ui/IgnoreListEdits.h"
#include "ui/TextStyle.h"
#include "ui/UiIcons.h"

namespace gf {

IgnoreListSettingsView::IgnoreListSettingsView(Settings& settings,
                                               ApplicationRegistry& applications, QWidget* parent)
    : GroupedForm(parent), settings_(settings), applications_(applications) {
    FormSection* section =
        addSection(std::make_unique<FormSection>(QStringLiteral("Ignored Applications")));
    auto explanation = std::make_unique<QLabel>(
        QStringLiteral("Glimmerfold will not move or resize windows from these applications."));
    explanation->setWordWrap(true);
    applyTextStyle(*explanation, TextStyle::caption);
    applySecondaryStyle(*explanation);
    section->addRow(std::move(explanation));

    auto list = std::make_unique<QListWidget>();
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setMinimumHeight(minimumListHeight);
    list->setAccessibleName(QStringLiteral("Ignored Applications"));
    list_ = section->addRow(std::move(list));
    section->addRow(makeButtons());

    showEntries(settings_.ignoreList());
    connect(list_, &QListWidget::itemSelectionChanged, this,
            &IgnoreListSettingsView::selectionChanged);
    connect(&settings_, &Settings::ignoreListChanged, this, &IgnoreListSettingsView::showEntries);
}

// An open sheet goes with the tab, adding nothing.
IgnoreListSettingsView::~IgnoreListSettingsView() {
    if (picker_ != nullptr) {
        picker_->disconnect(this);
    }
}

std::unique_ptr<QWidget> IgnoreListSettingsView::makeButtons() {
    auto row = std::make_unique<QWidget>();
    auto layout = std::make_unique<QHBoxLayout>();
    layout->setContentsMargins(0, 0, 0, 0);
    auto add = std::make_unique<QToolButton>();
    add->setIcon(uiIcon(QStringLiteral("plus")));
    add->setAccessibleName(QStringLiteral("Add"));
    add->setToolTip(QStringLiteral("Add"));
    auto remove = std::make_unique<QToolButton>();
    remove->setIcon(uiIcon(QStringLiteral("minus")));
    remove->setAccessibleName(QStringLiteral("Remove"));
    remove->setToolTip(QStringLiteral("Remove"));
    remove->setEnabled(false);
    add_ = add.get();
    remove_ = remove.get();
    layout->addWidget(add.release(), 0, Qt::AlignVCenter);
    layout->addWidget(remove.release(), 0, Qt::AlignVCenter);
    layout->addStretch(1);
    row->setLayout(layout.release());

    connect(add_, &QToolButton::clicked, this, &IgnoreListSettingsView::showAppPicker);
    connect(remove_, &QToolButton::clicked, this, &IgnoreListSettingsView::removeSelected);
    return row;
}

// Rows are rebuilt whenever the list changes; the selection survives while an equal entry is
// still there.
void IgnoreListSettingsView::showEntries(const std::vector<IgnoreListEntry>& entries) {
    const QSignalBlocker blocker(list_);
    list_->clear();
    shownEntries_ = entries;
    int selectedRow = -1;
    for (const IgnoreListEntry& entry : entries) {
        const std::optional<ApplicationIcon> icon =
            applications_.iconOfInstalledApplication(entry.bundleIdentifier);
        auto row = std::make_unique<ApplicationRow>(
            icon.has_value() ? pixmapOf(*icon, ApplicationRow::iconSize, devicePixelRatioF())
                             : QPixmap(),
            QString::fromStdString(entry.appName), QString::fromStdString(entry.bundleIdentifier));
        auto item = std::make_unique<QListWidgetItem>();
        item->setSizeHint(row->sizeHint());
        item->setData(Qt::AccessibleTextRole, QString::fromStdString(entry.appName));
        QListWidgetItem* added = item.get();
        list_->addItem(item.release());
        list_->setItemWidget(added, row.release());
        if (selectedRow < 0 && selectedEntry_ == entry) {
            selectedRow = list_->count() - 1;
        }
    }
    if (selectedRow >= 0) {
        list_->setCurrentRow(selectedRow);
    } else {
        selectedEntry_.reset();
    }
    remove_->setEnabled(selectedEntry_.has_value());
}

void IgnoreListSettingsView::selectionChanged() {
    const QList<QListWidgetItem*> selected = list_->selectedItems();
    const int row = selected.isEmpty() ? -1 : list_->row(selected.first());
    if (row >= 0 && static_cast<std::size_t>(row) < shownEntries_.size()) {
        selectedEntry_ = shownEntries_[static_cast<std::size_t>(row)];
    } else {
        selectedEntry_.reset();
    }
    remove_->setEnabled(selectedEntry_.has_value());
}

void IgnoreListSettingsView::showAppPicker() {
    if (picker_ != nullptr) {
        return;
    }
    picker_ = std::make_unique<RunningAppsPicker>(settings_, applications_, this);
    connect(picker_.get(), &QDialog::finished, this, &IgnoreListSettingsView::appPickerFinished);
    picker_->open();
}

void IgnoreListSettingsView::appPickerFinished() {
    // Still inside the sheet's own signal: it is deleted once control is back in the event loop.
    picker_.release()->deleteLater();
}

void IgnoreListSettingsView::removeSelected() {
    if (!selectedEntry_.has_value()) {
        return;
    }
    const std::string identifier = selectedEntry_->bundleIdentifier;
    selectedEntry_.reset();
    settings_.setIgnoreList(removingFromIgnoreList(settings_.ignoreList(), identifier));
    list_->clearSelection();
    remove_->setEnabled(false);
}

}  // namespace gf
