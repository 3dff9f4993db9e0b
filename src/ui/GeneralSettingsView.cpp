#include "ui/GeneralSettingsView.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

#include "app/AppState.h"
#include "app/LoginItem.h"
#include "ui/SettingsBinding.h"

namespace gf {

GeneralSettingsView::GeneralSettingsView(Settings& settings, AppState& appState, QWidget* parent)
    : GroupedForm(parent), settings_(settings), appState_(appState) {
    addShortcutsSection();
    addBehaviorSection();
    addAutoRaiseSection();
    addStartupSection();
}

// The question may still be open when the tab goes; it goes with it, answering nothing.
GeneralSettingsView::~GeneralSettingsView() {
    if (confirmation_ != nullptr) {
        confirmation_->disconnect(this);
    }
}

void GeneralSettingsView::addShortcutsSection() {
    FormSection* section = addSection(std::make_unique<FormSection>(QStringLiteral("Shortcuts")));
    movePicker_ = section->addRow(std::make_unique<ModifierKeyPicker>(
        QStringLiteral("Movement shortcut:"), settings_, property::moveModifiers));
    resizePicker_ = section->addRow(std::make_unique<ModifierKeyPicker>(
        QStringLiteral("Resize shortcut:"), settings_, property::resizeModifiers));
}

void GeneralSettingsView::addBehaviorSection() {
    FormSection* section = addSection(std::make_unique<FormSection>(QStringLiteral("Behavior")));
    bringToFront_ = section->addRow(
        makeSettingsToggle(QStringLiteral("Bring window to front when moving or resizing"),
                           settings_, property::bringToFrontOnManipulate));
    bottomRight_ =
        section->addRow(makeSettingsToggle(QStringLiteral("Always resize from bottom-right corner"),
                                           settings_, property::resizeFromBottomRightOnly));
}

void GeneralSettingsView::addAutoRaiseSection() {
    FormSection* section = addSection(std::make_unique<FormSection>(QStringLiteral("Auto Raise")));
    autoRaise_ = section->addRow(makeSettingsToggle(QStringLiteral("Enable auto raise"), settings_,
                                                    property::autoRaiseEnabled));
    section->addRow(makeDelayRow());
    allWindows_ = section->addRow(
        makeSettingsToggle(QStringLiteral("Bring all windows in application to front"), settings_,
                           property::autoRaiseAllWindows));
    autoRaisePicker_ = section->addLabelledRow(
        QStringLiteral("Only when keys pressed:"),
        std::make_unique<ModifierKeyPicker>(QString(), settings_, property::autoRaiseModifiers));

    for (QWidget* control :
         {static_cast<QWidget*>(delaySlider_), static_cast<QWidget*>(delayField_),
          static_cast<QWidget*>(allWindows_), static_cast<QWidget*>(autoRaisePicker_)}) {
        enableWhile(*control, settings_, property::autoRaiseEnabled);
    }
}

void GeneralSettingsView::addStartupSection() {
    FormSection* section = addSection(std::make_unique<FormSection>(QStringLiteral("Startup")));
    startAtLogin_ = section->addRow(makeSettingsToggle(QStringLiteral("Start Glimmerfold at login"),
                                                       settings_, property::startAtLogin));
    showInTaskbar_ = section->addRow(makeSettingsToggle(
        QStringLiteral("Show application icon in taskbar"), settings_, property::showInDock));
    showStatusMenu_ = section->addRow(makeStatusMenuToggle());

    // Changes made while the tab is shown, wherever they come from, reach the desktop; the values
    // found when the tab opens were applied at start-up already.
    connect(&settings_, &Settings::startAtLoginChanged, this,
            [](bool enabled) { setLaunchAtLogin(enabled); });
    connect(&settings_, &Settings::showInDockChanged, this,
            [this](bool show) { appState_.applyDockIconPolicy(show); });
}

std::unique_ptr<QWidget> GeneralSettingsView::makeDelayRow() {
    auto row = std::make_unique<QWidget>();
    auto layout = std::make_unique<QHBoxLayout>();
    layout->setContentsMargins(0, 0, 0, 0);

    auto caption = std::make_unique<QLabel>(QStringLiteral("Delay:"));
    auto slider = std::make_unique<QSlider>(Qt::Horizontal);
    slider->setRange(minimumDelaySteps, maximumDelaySteps);
    slider->setSingleStep(1);
    slider->setPageStep(1);
    slider->setAccessibleName(QStringLiteral("Delay"));
    auto field = std::make_unique<DelayField>(settings_);
    auto unit = std::make_unique<QLabel>(QStringLiteral("s"));

    delayCaption_ = caption.get();
    delaySlider_ = slider.get();
    delayField_ = field.get();
    delayUnit_ = unit.get();
    layout->addWidget(caption.release(), 0, Qt::AlignVCenter);
    layout->addWidget(slider.release(), 1, Qt::AlignVCenter);
    layout->addWidget(field.release(), 0, Qt::AlignVCenter);
    layout->addWidget(unit.release(), 0, Qt::AlignVCenter);
    row->setLayout(layout.release());

    showDelayOnSlider(settings_.autoRaiseDelay());
    connect(delaySlider_, &QSlider::valueChanged, &settings_, [this](int steps) {
        settings_.setAutoRaiseDelay(steps / double{delayStepsPerSecond});
    });
    connect(&settings_, &Settings::autoRaiseDelayChanged, this,
            &GeneralSettingsView::showDelayOnSlider);
    return row;
}

// A typed delay between the steps or beyond the range sits at the nearest step the slider has,
// without being rounded in Settings.
void GeneralSettingsView::showDelayOnSlider(double seconds) {
    const double steps = std::isfinite(seconds) ? seconds * delayStepsPerSecond : 0.0;
    const QSignalBlocker blocker(delaySlider_);
    delaySlider_->setValue(static_cast<int>(
        std::lround(std::clamp(steps, double{minimumDelaySteps}, double{maximumDelaySteps}))));
}

// Switching the status menu on takes effect at once; switching it off only asks, and the toggle
// stays on until the user confirms.
std::unique_ptr<QCheckBox> GeneralSettingsView::makeStatusMenuToggle() {
    auto toggle = std::make_unique<QCheckBox>(QStringLiteral("Show menu in status bar"));
    toggle->setChecked(settings_.showMenuBarIcon());
    connect(toggle.get(), &QCheckBox::clicked, this, [this](bool checked) {
        if (checked) {
            settings_.setShowMenuBarIcon(true);
        } else {
            showStatusMenu_->setChecked(true);
            askBeforeHidingStatusMenu();
        }
    });
    connect(&settings_, &Settings::showMenuBarIconChanged, toggle.get(),
            [box = toggle.get()](bool value) { box->setChecked(value); });
    return toggle;
}

void GeneralSettingsView::askBeforeHidingStatusMenu() {
    if (confirmation_ != nullptr) {
        return;
    }
    const QString title = QStringLiteral("Hide the menu bar icon?");
    confirmation_ = std::make_unique<QMessageBox>(this);
    confirmation_->setIcon(QMessageBox::Warning);
    // The question in bold and the explanation wide enough to read as a paragraph.
    confirmation_->setStyleSheet(
        QStringLiteral("QLabel#qt_msgbox_label { font-weight: bold; }"
                       "QLabel#qt_msgbox_informativelabel { min-width: 320px; }"));
    confirmation_->setWindowTitle(title);
    confirmation_->setText(title);
    confirmation_->setInformativeText(
        QStringLiteral("To show the menu bar icon again, relaunch Glimmerfold from your "
                       "applications menu. The Settings window will open automatically."));
    hideIconButton_ =
        confirmation_->addButton(QStringLiteral("Hide Icon"), QMessageBox::DestructiveRole);
    QPushButton* cancel =
        confirmation_->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    confirmation_->setDefaultButton(cancel);
    confirmation_->setEscapeButton(cancel);
    connect(confirmation_.get(), &QMessageBox::finished, this,
            &GeneralSettingsView::confirmationFinished);
    confirmation_->open();
}

// Either button, or closing the question, ends it; only "Hide Icon" writes.
void GeneralSettingsView::confirmationFinished() {
    const bool hide = confirmation_->clickedButton() == hideIconButton_;
    hideIconButton_ = nullptr;
    // Still inside the box's own signal: it is deleted once control is back in the event loop.
    confirmation_.release()->deleteLater();
    if (hide) {
        settings_.setShowMenuBarIcon(false);
    }
}

}  // namespace gf
