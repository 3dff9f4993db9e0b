#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QSlider>
#include <QString>

#include "model/Settings.h"
#include "ui/GroupedForm.h"

namespace gf {

// The Magnetics tab: snapping on or off, what moved windows snap to, and the snapping distance.
// The target toggles and the threshold slider can be operated only while magnetics are on; they
// keep showing their values either way.
class MagneticsSettingsView : public GroupedForm {
    Q_OBJECT

  public:
    static constexpr int minimumThreshold = 2;
    static constexpr int maximumThreshold = 30;

    explicit MagneticsSettingsView(Settings& settings, QWidget* parent = nullptr);

    // "12 px" for 12.9 and 12.0 alike: the threshold truncated toward zero.
    static QString thresholdText(double threshold);

    QCheckBox& enableToggle() { return *enable_; }
    QCheckBox& screenEdgesToggle() { return *screenEdges_; }
    QCheckBox& windowEdgesToggle() { return *windowEdges_; }
    QCheckBox& panelsToggle() { return *panels_; }
    QLabel& thresholdCaption() { return *thresholdCaption_; }
    QSlider& thresholdSlider() { return *slider_; }
    QLabel& thresholdLabel() { return *thresholdLabel_; }

  private:
    std::unique_ptr<QWidget> makeThresholdRow();
    void showThreshold(double threshold);

    Settings& settings_;
    // All owned by the form's sections through Qt parenting.
    QCheckBox* enable_ = nullptr;
    QCheckBox* screenEdges_ = nullptr;
    QCheckBox* windowEdges_ = nullptr;
    QCheckBox* panels_ = nullptr;
    QLabel* thresholdCaption_ = nullptr;
    QSlider* slider_ = nullptr;
    QLabel* thresholdLabel_ = nullptr;
};

}  // namespace gf
