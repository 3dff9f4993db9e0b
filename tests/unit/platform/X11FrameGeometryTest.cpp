#include "platform/x11/X11FrameGeometry.h"

#include <gtest/gtest.h>

namespace gf {
namespace {

// An xterm-like client in a frame with a 20-pixel title bar and 5-pixel borders.
X11FrameGeometry decoratedClient() {
    X11FrameGeometry geometry;
    geometry.client = {110, 130, 300, 200};
    geometry.decorations = {5, 5, 25, 5};
    geometry.frameWindow = Rect{105, 105, 310, 230};
    return geometry;
}

// A GTK 4 window drawing its own title bar inside a 61/61/55/67 shadow, framed by nobody.
X11FrameGeometry shadowedClient() {
    X11FrameGeometry geometry;
    geometry.client = {0, 0, 522, 422};
    geometry.shadow = {61, 61, 55, 67};
    return geometry;
}

TEST(X11FrameGeometryTest,
     TheVisibleFrameHoldsDecorationsAndBordersButNoShadowAndFollowsAFrameAhead) {
    EXPECT_EQ(decoratedClient().visibleFrame(), (Rect{105, 105, 310, 230}));

    EXPECT_EQ(shadowedClient().visibleFrame(), (Rect{61, 55, 400, 300}));

    X11FrameGeometry bordered;  // an unmanaged window with a one-pixel X border
    bordered.client = {11, 21, 100, 50};
    bordered.border = 1;
    EXPECT_EQ(bordered.visibleFrame(), (Rect{10, 20, 102, 52}));

    // The window manager has shrunk its frame; the client inside still has its old size.
    X11FrameGeometry geometry = decoratedClient();
    geometry.frameWindow = Rect{105, 105, 110, 80};
    EXPECT_EQ(geometry.visibleFrame(), (Rect{105, 105, 110, 80}));
    EXPECT_EQ(geometry.clientSize(), (Size{100, 50}));

    // A frame window reaching beyond the decorations (invisible borders) is not the answer.
    geometry.frameWindow = Rect{95, 95, 330, 250};
    EXPECT_EQ(geometry.visibleFrame(), (Rect{105, 105, 310, 230}));
}

TEST(X11FrameGeometryTest, WritesAimTheVisibleFrameOfTheExtentsDeclared) {
    const X11FrameGeometry decorated = decoratedClient();
    EXPECT_EQ(decorated.decoratedCornerFor({0, 0}), (Point{0, 0}));
    EXPECT_EQ(decorated.clientSizeFor({310, 230}), (Size{300, 200}));

    const X11FrameGeometry shadowed = shadowedClient();
    EXPECT_EQ(shadowed.decoratedCornerFor({0, 0}), (Point{-61, -55}));
    EXPECT_EQ(shadowed.clientSizeFor({400, 300}), (Size{522, 422}));
    EXPECT_EQ(shadowed.clientSize(), (Size{522, 422}));

    X11FrameGeometry bordered;
    bordered.border = 1;
    EXPECT_EQ(bordered.clientSizeFor({102, 52}), (Size{100, 50}));
    EXPECT_EQ(bordered.clientSizeFor({1, 1}), (Size{1, 1}));

    // An extents property without all four sizes declares none.
    EXPECT_EQ(FrameExtents::fromProperty({5, 6, 25, 7}), (FrameExtents{5, 6, 25, 7}));
    EXPECT_EQ(FrameExtents::fromProperty({5, 6, 25}), std::nullopt);
    EXPECT_EQ(FrameExtents::fromProperty({}), std::nullopt);
}

}  // namespace
}  // namespace gf
