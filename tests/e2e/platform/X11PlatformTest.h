#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>

#include "x11/X11DesktopTest.h"

namespace gf::test {

// A window of the test's own with its outer frame at (x, y), of an EWMH type when one is named.
inline TestWindowOptions windowAt(int x, int y, std::string type = {}, int width = 200,
                                  int height = 150) {
    TestWindowOptions options;
    std::tie(options.x, options.y, options.width, options.height) = std::tie(x, y, width, height);
    options.type = std::move(type);
    return options;
}

enum class Edge { left, right, top, bottom };

// A dock's strut: `size` pixels reserved from one edge of the root, over [first, last] along it.
inline StrutPartial strutAlong(Edge edge, std::uint32_t size, std::uint32_t first,
                               std::uint32_t last) {
    using Field = std::uint32_t StrutPartial::*;
    constexpr std::array<std::array<Field, 3>, 4> fields{{
        {&StrutPartial::left, &StrutPartial::leftStartY, &StrutPartial::leftEndY},
        {&StrutPartial::right, &StrutPartial::rightStartY, &StrutPartial::rightEndY},
        {&StrutPartial::top, &StrutPartial::topStartX, &StrutPartial::topEndX},
        {&StrutPartial::bottom, &StrutPartial::bottomStartX, &StrutPartial::bottomEndX},
    }};
    const auto [width, start, end] = fields[static_cast<std::size_t>(edge)];
    StrutPartial strut;
    strut.*width = size;
    strut.*start = first;
    strut.*end = last;
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
