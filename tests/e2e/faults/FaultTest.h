#pragma once

// The real program while the rest of the desktop misbehaves: afterwards gestures still land to
// the pixel and nothing saved is lost.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "x11/GlimmerfoldDesktopTest.h"

namespace gf::test {

inline constexpr auto kMove = GestureKind::move;
inline constexpr auto kResize = GestureKind::resize;

class FaultTest : public GlimmerfoldDesktopTest {
  protected:
    Rect frameOf(WindowId window) const {
        const std::optional<Rect> frame = probe().frameGeometry(window);
        EXPECT_TRUE(frame) << "window " << window << " has no frame";
        return frame.value_or(Rect{});
    }

    // Moves and resizes of `window` land to the pixel; the window ends where it started.
    void expectGesturesWork(WindowId window, const std::string& when) {
        for (const int sign : {1, -1}) {
            for (const auto& [kind, dx, dy] : {std::tuple{kMove, 40, 30}, {kResize, 30, 20}}) {
                const GestureOutcome outcome = hands().perform(kind, window, sign * dx, sign * dy);
                EXPECT_TRUE(outcome.exact())
                    << (kind == kMove ? "move " : "resize ") << when << ": " << outcome << "\n"
                    << glimmerfold().output();
            }
        }
    }
};

}  // namespace gf::test
