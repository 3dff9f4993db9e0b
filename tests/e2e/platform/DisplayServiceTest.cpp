#include <gtest/gtest.h>

#include "platform/DisplayService.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

class DisplayServiceTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        platform_ = connectPlatform();
        ASSERT_NE(platform_, nullptr);
    }

    std::unique_ptr<X11Platform> platform_;
};

TEST_F(DisplayServiceTest, ASingleScreenIsOneDisplay) {
    const std::vector<DisplayInfo> displays = platform_->displays().displays();
    ASSERT_EQ(displays.size(), 1u);
    EXPECT_EQ(displays[0].frame, (Rect{0, 0, 1280, 800}));
    EXPECT_EQ(displays[0].visibleFrame, (Rect{0, 0, 1280, 800}));
}

// A 2560 x 800 screen split into a shorter monitor on the left that starts
// 100 pixels down and the primary one on the right, listed second.
class TwoMonitorTest : public DisplayServiceTest {
  protected:
    X11Desktop::Options desktopOptions() const override { return {2560, 800, true}; }

    void SetUp() override {
        DisplayServiceTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        desktop().setMonitors({{0, 100, 1280, 600}, {1280, 0, 1280, 800}}, 1);
    }
};

TEST_F(TwoMonitorTest, ComeBackPrimaryFirstInBottomLeftCoordinates) {
    const std::vector<DisplayInfo> displays = platform_->displays().displays();
    ASSERT_EQ(displays.size(), 2u);
    // Measured upwards from the bottom of the primary monitor (800 high).
    EXPECT_EQ(displays[0].frame, (Rect{1280, 0, 1280, 800}));
    EXPECT_EQ(displays[1].frame, (Rect{0, 100, 1280, 600}));
    EXPECT_EQ(displays[0].visibleFrame, displays[0].frame);
    EXPECT_EQ(displays[1].visibleFrame, displays[1].frame);
}

TEST_F(TwoMonitorTest, ADockStrutShrinksOnlyTheMonitorItTouches) {
    // A 30-pixel panel along the top of the left monitor: its strut reserves
    // the root's top 130 rows, but only across the left monitor's columns.
    StrutPartial top;
    top.top = 130;
    top.topStartX = 0;
    top.topEndX = 1279;
    desktop().createDock(0, 100, 1280, 30, top);
    // And one along the bottom of the primary monitor.
    StrutPartial bottom;
    bottom.bottom = 30;
    bottom.bottomStartX = 1280;
    bottom.bottomEndX = 2559;
    desktop().createDock(1280, 770, 1280, 30, bottom);

    const std::vector<DisplayInfo> displays = platform_->displays().displays();
    ASSERT_EQ(displays.size(), 2u);
    EXPECT_EQ(displays[0].frame, (Rect{1280, 0, 1280, 800}));
    EXPECT_EQ(displays[0].visibleFrame, (Rect{1280, 30, 1280, 770}));
    EXPECT_EQ(displays[1].frame, (Rect{0, 100, 1280, 600}));
    EXPECT_EQ(displays[1].visibleFrame, (Rect{0, 100, 1280, 570}));
}

TEST_F(TwoMonitorTest, MonitorsAreReadAfreshOnEveryCall) {
    ASSERT_EQ(platform_->displays().displays().size(), 2u);
    desktop().setMonitors({{0, 0, 2560, 800}});
    const std::vector<DisplayInfo> displays = platform_->displays().displays();
    ASSERT_EQ(displays.size(), 1u);
    EXPECT_EQ(displays[0].frame, (Rect{0, 0, 2560, 800}));
}

}  // namespace
}  // namespace gf::test
