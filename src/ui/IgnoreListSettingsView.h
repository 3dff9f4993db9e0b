#pragma once

#include <QLabel>
#include <QListWidget>
#include <QToolButton>
#include <memory>
#include <optional>

#include "model/Settings.h"
#include "platform/ApplicationRegistry.h"
#include "ui/GroupedForm.h"
#include "ui/RunningAppsPicker.h"

namespace gf {

// The Ignore List tab: the applications Glimmerfold leaves alone, in the order they were added,
// with "plus" opening the running-applications sheet and "minus" removing the selected one.
class IgnoreListSettingsView : public GroupedForm {
    Q_OBJECT

  public:
    static constexpr int minimumListHeight = 200;

    IgnoreListSettingsView(Settings& settings, ApplicationRegistry& applications,
                           QWidget* parent = nullptr);
    ~IgnoreListSettingsView() override;

    QListWidget& list() { return *list_; }
    QToolButton& addButton() { return *add_; }
    QToolButton& removeButton() { return *remove_; }
    // The sheet while it is shown, else nullptr.
    RunningAppsPicker* appPicker() const { return picker_.get(); }
    const std::optional<IgnoreListEntry>& selectedEntry() const { return selectedEntry_; }

  private:
    std::unique_ptr<QWidget> makeButtons();
    void showEntries(const std::vector<IgnoreListEntry>& entries);
    void selectionChanged();
    void showAppPicker();
    void appPickerFinished();
    void removeSelected();

    Settings& settings_;
    ApplicationRegistry& applications_;
    std::vector<IgnoreListEntry> shownEntries_;  // what the list's rows stand for, row by row
    std::optional<IgnoreListEntry> selectedEntry_;
    // Owned by the form's section through Qt parenting.
    QListWidget* list_ = nullptr;
    QToolButton* add_ = nullptr;
    QToolButton* remove_ = nullptr;
    std::unique_ptr<RunningAppsPicker> picker_;
};

}  // namespace gf
