#pragma once

// Glimmerfold, the real program, while the rest of the desktop misbehaves. Each test checks that
// it keeps working afterwards (the next gesture moves or resizes a window to the pixel) and that
// nothing saved is lost.
#include <gtest/gtest.h>

#include <string>
#include <vector>

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
            const GestureOutcome move = hands().perform(kMove, window, sign * 40, sign * 30);
            EXPECT_TRUE(move.exact()) << "move " << when << ": " << move << "\n"
                                      << glimmerfold().output();
            const GestureOutcome resize = hands().perform(kResize, window, sign * 30, sign * 20);
            EXPECT_TRUE(resize.exact()) << "resize " << when << ": " << resize << "\n"
                                        << glimmerfold().output();
        }
    }
};

}  // namespace gf::test
