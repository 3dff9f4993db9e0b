#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "x11/X11DesktopTest.h"

namespace gf::test {

// A window of the test's own with its outer frame at (x, y), of an EWMH type when one is named.
inline TestWindowOptions windowAt(int x, int y, std::string type = {}, int width = 200,
                                  int height = 150) {
    TestWindowOptions options;
    options.x = x;
    options.y = y;
    options.width = width;
    options.height = height;
    options.type = std::move(type);
    return options;
}

enum class Edge { left, right, top, bottom };

// A dock's strut: `size` pixels reserved from one edge of the root, over [first, last] along it.
inline StrutPartial strutAlong(Edge edge, std::uint32_t size, std::uint32_t first,
                               std::uint32_t last) {
    StrutPartial strut;
    auto reserve = [&](std::uint32_t& width, std::uint32_t& start, std::uint32_t& end) {
        width = size;
        start = first;
        end = last;
    };
    switch (edge) {
        case Edge::left:
            reserve(strut.left, strut.leftStartY, strut.leftEndY);
            break;
        case Edge::right:
            reserve(strut.right, strut.rightStartY, strut.rightEndY);
            break;
        case Edge::top:
            reserve(strut.top, strut.topStartX, strut.topEndX);
            break;
        case Edge::bottom:
            reserve(strut.bottom, strut.bottomStartX, strut.bottomEndX);
            break;
    }
    return strut;
}

// The X11 backend connected to a private desktop of its own.
class X11PlatformTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        platform_ = connectPlatform();
        ASSERT_NE(platform_, nullptr);
    }

    std::unique_ptr<X11Platform> platform_;
};

}  // namespace gf::test
