#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QSlider>
#include <memory>

#include "model/Settings.h"
#include "ui/DelayField.h"
#include "ui/GroupedForm.h"
#include "ui/ModifierKeyPicker.h"

namespace gf {

class AppState;

// The General tab: the move and resize keys, behaviour while manipulating, auto raise, and what
// happens at login and on the desktop. Every control writes straight into Settings.
class GeneralSettingsView : public GroupedForm {
    Q_OBJECT

  public:
    // The delay slider works on whole steps of 0.05 s: 1 to 40 stands for 0.05 to 2.0 seconds.
    static constexpr int delayStepsPerSecond = 20;
    static constexpr int minimumDelaySteps = 1;
    static constexpr int maximumDelaySteps = 40;

    GeneralSettingsView(Settings& settings, AppState& appState, QWidget* parent = nullptr);
    ~GeneralSettingsView() override;

    ModifierKeyPicker& movePicker() { return *movePicker_; }
    ModifierKeyPicker& resizePicker() { return *resizePicker_; }
    QCheckBox& bringToFrontToggle() { return *bringToFront_; }
    QCheckBox& bottomRightToggle() { return *bottomRight_; }
    QCheckBox& autoRaiseToggle() { return *autoRaise_; }
    QLabel& delayCaption() { return *delayCaption_; }
    QSlider& delaySlider() { return *delaySlider_; }
    DelayField& delayField() { return *delayField_; }
    QLabel& delayUnit() { return *delayUnit_; }
    QCheckBox& allWindowsToggle() { return *allWindows_; }
    ModifierKeyPicker& autoRaisePicker() { return *autoRaisePicker_; }
    QCheckBox& startAtLoginToggle() { return *startAtLogin_; }
    QCheckBox& showInTaskbarToggle() { return *showInTaskbar_; }
    QCheckBox& showStatusMenuToggle() { return *showStatusMenu_; }

    // The "Hide the menu bar icon?" question while it is shown, else nullptr.
    QMessageBox* hideIconConfirmation() const { return confirmation_.get(); }

  private:
    void addShortcutsSection();
    void addBehaviorSection();
    void addAutoRaiseSection();
    void addStartupSection();
    std::unique_ptr<QWidget> makeDelayRow();
    std::unique_ptr<QCheckBox> makeStatusMenuToggle();
    void showDelayOnSlider(double seconds);
    void askBeforeHidingStatusMenu();
    void confirmationFinished();

    Settings& settings_;
    AppState& appState_;
    // All owned by the form's sections through Qt parenting.
    ModifierKeyPicker* movePicker_ = nullptr;
    ModifierKeyPicker* resizePicker_ = nullptr;
    QCheckBox* bringToFront_ = nullptr;
    QCheckBox* bottomRight_ = nullptr;
    QCheckBox* autoRaise_ = nullptr;
    QLabel* delayCaption_ = nullptr;
    QSlider* delaySlider_ = nullptr;
    DelayField* delayField_ = nullptr;
    QLabel* delayUnit_ = nullptr;
    QCheckBox* allWindows_ = nullptr;
    ModifierKeyPicker* autoRaisePicker_ = nullptr;
    QCheckBox* startAtLogin_ = nullptr;
    QCheckBox* showInTaskbar_ = nullptr;
    QCheckBox* showStatusMenu_ = nullptr;
    QAbstractButton* hideIconButton_ = nullptr;  // owned by confirmation_
    std::unique_ptr<QMessageBox> confirmation_;
};

}  // namespace gf
