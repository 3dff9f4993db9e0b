#include "EngineTest.h"
#include "engine/MagneticsEngine.h"

namespace gf::test {
namespace {

using Lines = std::vector<double>;
using MagneticsEngineTest = EngineTest;

TEST_F(MagneticsEngineTest, LinesComeDisplaysFirstThenUsableAreasThenOtherWindows) {
    desktop.addWindow(Window::at({100, 100, 400, 300}, 1));
    desktop.addWindow(Window::at({7, 7, 7, 7}, FakeDesktop::ownPid));
    desktop.addWindow(Window::at({8, 8, 8, 8}, 2).withLayer(WindowLayer::floating));
    desktop.addWindow(Window::at({9, 9, 0, 9}, 3));
    desktop.addWindow(Window::at({11, 11, 11, 11}, 4).withLayer(WindowLayer::dock));
    desktop.addWindow(Window::at({0, 0, 1440, 900}, 5).withLayer(WindowLayer::desktop));
    desktop.addWindow(Window::at({600, 50, 100, 50}, 6));

    const SnapEdges all = MagneticsEngine::collectEdges(settings, platform);
    // The 1440 x 900 display, its area below a 25-point panel, other processes' windows in front.
    EXPECT_EQ(all.verticalEdges, (Lines{0, 1440, 0, 1440, 600, 700, 100, 500}));
    EXPECT_EQ(all.horizontalEdges, (Lines{0, 900, 25, 900, 50, 100, 100, 400}));

    settings.setSnapToScreenEdges(false);
    settings.setSnapToWindowEdges(false);
    settings.setSnapThreshold(4);
    const SnapEdges usableOnly = MagneticsEngine::collectEdges(settings, platform);
    EXPECT_EQ(usableOnly.verticalEdges, (Lines{0, 1440}));
    EXPECT_EQ(usableOnly.horizontalEdges, (Lines{25, 900}));
    EXPECT_EQ(usableOnly.threshold, 4);

    settings.setSnapToDockAndMenuBar(false);
    const SnapEdges none = MagneticsEngine::collectEdges(settings, platform);
    EXPECT_TRUE(none.verticalEdges.empty());
    EXPECT_TRUE(none.horizontalEdges.empty());
    EXPECT_EQ(MagneticsEngine::snap({3, 4}, {10, 10}, none), (Point{3, 4}));
}

TEST_F(MagneticsEngineTest, DisplaysOfDifferentHeightsEachGiveTheirOwnLines) {
    // A taller display to the right of the primary, level with its bottom, so reaching above it.
    desktop.setDisplays({{{0, 0, 1920, 1080}, {0, 25, 1920, 1055}},
                         {{1920, -360, 2560, 1440}, {1920, -335, 2560, 1415}}});
    settings.setSnapToWindowEdges(false);
    const SnapEdges edges = MagneticsEngine::collectEdges(settings, platform);
    EXPECT_EQ(edges.verticalEdges, (Lines{0, 1920, 1920, 4480, 0, 1920, 1920, 4480}));
    EXPECT_EQ(edges.horizontalEdges, (Lines{0, 1080, -360, 1080, 25, 1080, -335, 1080}));
    EXPECT_EQ(MagneticsEngine::snap({2500, -355}, {400, 300}, edges), (Point{2500, -360}));

    desktop.setDisplays({});
    EXPECT_TRUE(MagneticsEngine::collectEdges(settings, platform).verticalEdges.empty());
}

TEST(MagneticsSnapTest, FirstLineWithinTheThresholdWinsNearSideFirstStrictlyCloser) {
    const SnapEdges single{{100}, {}, 10};
    EXPECT_EQ(MagneticsEngine::snap({90.5, 0}, {}, single).x, 100);  // 9.5 away
    EXPECT_EQ(MagneticsEngine::snap({90, 0}, {}, single).x, 90);     // exactly 10: no snap
    EXPECT_EQ(MagneticsEngine::snap({109.9, 0}, {}, single).x, 100);

    const SnapEdges edges{{100, 95, 500}, {50}, 10};
    const Size size{100, 20};
    EXPECT_EQ(MagneticsEngine::snap({96, 0}, size, edges).x, 100);   // first line, not nearest
    EXPECT_EQ(MagneticsEngine::snap({395, 0}, size, edges).x, 400);  // right side onto 500
    // The right side lies exactly on 95, but 100 comes first in the list.
    EXPECT_EQ(MagneticsEngine::snap({-5, 0}, size, edges).x, 0);
    // Both sides near 100: the left side is tried first.
    EXPECT_EQ(MagneticsEngine::snap({97, 0}, {5, 5}, edges).x, 100);

    // Each axis on its own: top onto 50, bottom onto 50, or no match at all.
    EXPECT_EQ(MagneticsEngine::snap({1000, 45}, size, edges), (Point{1000, 50}));
    EXPECT_EQ(MagneticsEngine::snap({1000, 25}, size, edges), (Point{1000, 30}));
    EXPECT_EQ(MagneticsEngine::snap({96, 200}, size, edges), (Point{100, 200}));

    for (double threshold : {0.0, -5.0}) {
        const SnapEdges off{{100}, {100}, threshold};
        EXPECT_EQ(MagneticsEngine::snap({100, 100}, size, off), (Point{100, 100}));
    }
}

}  // namespace
}  // namespace gf::test
