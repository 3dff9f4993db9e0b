#include "ui/MagneticsSettingsView.h"

#include <QSignalSpy>
#include <QTest>

#include "UiTestFixture.h"

namespace gf::test {
namespace {

using MagneticsSettingsViewTest = UiTest;

TEST_F(MagneticsSettingsViewTest,
       TargetsAndSliderWorkOnlyWhileMagneticsAreOnAndTheSliderShowsStoredValuesTruncated) {
    settings().setSnapThreshold(12.0);
    settings().setSnapToWindowEdges(false);
    MagneticsSettingsView view(settings());
    view.enableToggle().click();
    EXPECT_FALSE(settings().magneticsEnabled());
    for (QWidget* control :
         std::initializer_list<QWidget*>{&view.screenEdgesToggle(), &view.windowEdgesToggle(),
                                         &view.panelsToggle(), &view.thresholdSlider()}) {
        EXPECT_FALSE(control->isEnabled()) << control->metaObject()->className();
    }
    EXPECT_TRUE(view.enableToggle().isEnabled());
    EXPECT_TRUE(view.thresholdLabel().isEnabled());
    EXPECT_EQ(view.thresholdLabel().text(), QStringLiteral("12 px"));
    // Disabled toggles keep showing the targets, which switching magnetics off leaves alone.
    EXPECT_TRUE(view.screenEdgesToggle().isChecked());
    EXPECT_FALSE(view.windowEdgesToggle().isChecked());
    EXPECT_TRUE(settings().snapToScreenEdges());

    settings().setMagneticsEnabled(true);  // from elsewhere
    EXPECT_TRUE(view.enableToggle().isChecked());
    EXPECT_TRUE(view.thresholdSlider().isEnabled());
    view.windowEdgesToggle().click();
    EXPECT_TRUE(settings().snapToWindowEdges());

    // The slider stops at 2 and 30 and shows stored values truncated.
    QSlider& slider = view.thresholdSlider();
    slider.setValue(slider.minimum());
    QTest::keyClick(&slider, Qt::Key_Right);
    EXPECT_DOUBLE_EQ(settings().snapThreshold(), 3.0);
    EXPECT_EQ(view.thresholdLabel().text(), QStringLiteral("3 px"));

    // Stored values between the steps or beyond the ends are shown, not written back.
    QSignalSpy changes(&settings(), &Settings::snapThresholdChanged);
    settings().setSnapThreshold(7.9);
    EXPECT_EQ(view.thresholdLabel().text(), QStringLiteral("7 px"));
    EXPECT_EQ(slider.value(), 8);
    settings().setSnapThreshold(45.0);
    EXPECT_EQ(view.thresholdLabel().text(), QStringLiteral("45 px"));
    EXPECT_EQ(slider.value(), 30);
    EXPECT_EQ(changes.count(), 2);
    EXPECT_EQ(MagneticsSettingsView::thresholdText(-0.5), QStringLiteral("0 px"));
    EXPECT_EQ(MagneticsSettingsView::thresholdText(-2.7), QStringLiteral("-2 px"));
}

}  // namespace
}  // namespace gf::test
