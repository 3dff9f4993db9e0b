#include "ui/MagneticsSettingsView.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "ui/SettingsBinding.h"

namespace gf {

MagneticsSettingsView::MagneticsSettingsView(Settings& settings, QWidget* parent)
    : GroupedForm(parent), settings_(settings) {
    FormSection* magnetics = addSection(std::make_unique<FormSection>(QStringLiteral("Magnetics")));
    enable_ = magnetics->addRow(makeSettingsToggle(QStringLiteral("Enable magnetics"), settings_,
                                                   property::magneticsEnabled));

    FormSection* targets =
        addSection(std::make_unique<FormSection>(QStringLiteral("Snap Targets")));
    screenEdges_ = targets->addRow(makeSettingsToggle(QStringLiteral("Snap to screen edges"),
                                                      settings_, property::snapToScreenEdges));
    windowEdges_ = targets->addRow(makeSettingsToggle(QStringLiteral("Snap to other window edges"),
                                                      settings_, property::snapToWindowEdges));
    panels_ = targets->addRow(makeSettingsToggle(QStringLiteral("Snap to panels and docks"),
                                                 settings_, property::snapToDockAndMenuBar));

    FormSection* sensitivity =
        addSection(std::make_unique<FormSection>(QStringLiteral("Sensitivity")));
    sensitivity->addRow(makeThresholdRow());

    for (QWidget* control :
         {static_cast<QWidget*>(screenEdges_), static_cast<QWidget*>(windowEdges_),
          static_cast<QWidget*>(panels_), static_cast<QWidget*>(slider_)}) {
        enableWhile(*control, settings_, property::magneticsEnabled);
    }
}

std::unique_ptr<QWidget> MagneticsSettingsView::makeThresholdRow() {
    auto row = std::make_unique<QWidget>();
    auto layout = std::make_unique<QHBoxLayout>();
    layout->setContentsMargins(0, 0, 0, 0);

    auto caption = std::make_unique<QLabel>(QStringLiteral("Threshold:"));
    auto slider = std::make_unique<QSlider>(Qt::Horizontal);
    slider->setRange(minimumThreshold, maximumThreshold);
    slider->setSingleStep(1);
    slider->setPageStep(1);
    slider->setAccessibleName(QStringLiteral("Threshold"));

    auto label = std::make_unique<QLabel>();
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPointSizeF(font().pointSizeF());
    label->setFont(digits);
    label->setFixedWidth(50);
    label->setAlignment(Qt::AlignCenter);

    thresholdCaption_ = caption.get();
    slider_ = slider.get();
    thresholdLabel_ = label.get();
    layout->addWidget(caption.release(), 0, Qt::AlignVCenter);
    layout->addWidget(slider.release(), 1, Qt::AlignVCenter);
    layout->addWidget(label.release(), 0, Qt::AlignVCenter);
    row->setLayout(layout.release());

    showThreshold(settings_.snapThreshold());
    connect(slider_, &QSlider::valueChanged, &settings_,
            [this](int value) { settings_.setSnapThreshold(value); });
    connect(&settings_, &Settings::snapThresholdChanged, this,
            &MagneticsSettingsView::showThreshold);
    return row;
}

QString MagneticsSettingsView::thresholdText(double threshold) {
    // The text format "%lld px", with the value truncated as a 64-bit integer conversion does;
    // values beyond that range saturate instead of overflowing.
    constexpr double limit = 9.2e18;
    const double truncated = std::isfinite(threshold) ? std::trunc(threshold) : 0.0;
    const auto whole = static_cast<std::int64_t>(std::clamp(truncated, -limit, limit));
    return QString::asprintf("%lld px", static_cast<long long>(whole));
}

// A stored value between the steps, or outside the range, is shown where the slider can show it
// without being written back.
void MagneticsSettingsView::showThreshold(double threshold) {
    {
        const QSignalBlocker blocker(slider_);
        const double shown = std::isfinite(threshold) ? threshold : 0.0;
        slider_->setValue(static_cast<int>(
            std::lround(std::clamp(shown, double{minimumThreshold}, double{maximumThreshold}))));
    }
    thresholdLabel_->setText(thresholdText(threshold));
}

}  // namespace gf
