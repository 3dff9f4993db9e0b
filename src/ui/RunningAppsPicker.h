#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <memory>
#include <vector>

#include "model/Settings.h"
#include "platform/ApplicationRegistry.h"
#include "platform/RunningApplication.h"

namespace gf {

// The sheet over the Settings window that lists the applications running when it opened; one
// click puts an application on the ignore list (unless it is there already) and closes the sheet.
class RunningAppsPicker : public QDialog {
    Q_OBJECT

  public:
    static constexpr int listWidth = 450;
    static constexpr int listHeight = 300;

    RunningAppsPicker(Settings& settings, ApplicationRegistry& applications,
                      QWidget* parent = nullptr);
    ~RunningAppsPicker() override;

    // The offered applications, in the order shown, and the button of each.
    const std::vector<RunningApplication>& candidates() const { return candidates_; }
    QPushButton& rowButton(std::size_t index) { return *rowButtons_.at(index); }
    QPushButton& cancelButton() { return *cancel_; }

    // The name a row shows: the display name, or "Unknown".
    static QString displayNameOf(const RunningApplication& application);

  private:
    std::unique_ptr<QWidget> makeList();
    void choose(std::size_t index);

    Settings& settings_;
    std::vector<RunningApplication> candidates_;
    std::vector<QPushButton*> rowButtons_;  // owned by the scrolled list
    std::unique_ptr<QLabel> heading_;
    std::unique_ptr<QPushButton> cancel_;
};

}  // namespace gf
