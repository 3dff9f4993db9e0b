// Windows maximized on one axis or both: a gesture first asks the window manager to restore them.
#include "DragSessionTest.h"

namespace gf::test {
namespace {

// The fake window manager maximizes to the usable area (0, 25, 1440, 875).
class MaximizedDragSessionTest : public DragSessionTest {
  protected:
    std::uint32_t maximized(Rect restored, bool horizontally = true, bool vertically = true) {
        const Rect frame{horizontally ? 0 : restored.x, vertically ? 25 : restored.y,
                         horizontally ? 1440 : restored.width, vertically ? 875 : restored.height};
        return desktop.addWindow(
            Window::at(frame, pid).withMaximized(restored, horizontally, vertically));
    }
    // Raising and maximizing do not count.
    bool geometryWritten() const {
        return std::ranges::any_of(kindsOf(desktop.writes()),
                                   [](Kind k) { return k == Kind::position || k == Kind::size; });
    }
    // Lets the pointer rest there long enough for a restore to be taken as done.
    void restAt(Point p) {
        for (int tick = 0; tick < 3; ++tick) {
            pointerTo(p);
        }
    }
};

TEST_F(MaximizedDragSessionTest, AMoveWaitsForTheRestoredSizeAndKeepsThePointerOnItsSpot) {
    const std::uint32_t editor = maximized({200, 150, 400, 300});
    desktop.setStateChangesDeferred(true);
    startMove({720, 200}, editor);  // half way across, a fifth of the way down
    pointerTo({730, 210});
    desktop.advance(40ms);
    EXPECT_FALSE(geometryWritten()) << "the window manager has not restored it yet";
    EXPECT_TRUE(desktop.stateOf(editor).isMaximized());

    // Some window managers give back the decorations a moment before the size.
    desktop.carryOutStateChanges();
    desktop.placeWindow(editor, {0, 25, 1442, 881});
    desktop.advance(8ms);
    desktop.placeWindow(editor, {200, 150, 400, 300});
    EXPECT_FALSE(geometryWritten()) << "taken in the middle of the restore";
    desktop.advance(16ms);
    EXPECT_EQ(desktop.frameOf(editor), (Rect{530, 150, 400, 300}));
    pointerTo({830, 260});
    EXPECT_EQ(desktop.frameOf(editor), (Rect{630, 200, 400, 300}));

    // A cancel maximizes it again, and leaving that state later gives the same restored frame.
    desktop.setStateChangesDeferred(false);
    session.cancel();
    desktop.runPendingQueueWork();
    EXPECT_EQ(desktop.frameOf(editor), (Rect{0, 25, 1440, 875}));
    EXPECT_TRUE(desktop.stateOf(editor).maximizedVertically);
    EXPECT_TRUE(desktop.stateOf(editor).maximizedHorizontally);
    startMove({720, 200}, editor);
    restAt({720, 201});
    EXPECT_EQ(desktop.frameOf(editor), (Rect{520, 141, 400, 300}));
    session.end();
}

TEST_F(MaximizedDragSessionTest, OnlyTheMaximizedAxisIsRestoredAndMagneticsStillApply) {
    settings.setMagneticsEnabled(true);
    const std::uint32_t tall = maximized({300, 150, 400, 300}, false, true);
    startMove({500, 200}, tall);
    restAt({530, 230});
    EXPECT_EQ(desktop.frameOf(tall), (Rect{330, 170, 400, 300}));
    pointerTo({530, 90});  // the top edge 5 below the usable area's top: it snaps there
    EXPECT_EQ(desktop.frameOf(tall), (Rect{330, 25, 400, 300}));
    session.end();
}

TEST_F(MaximizedDragSessionTest, AResizeGoesOnFromTheMaximizedFrameAndAMoveFromOneAsLarge) {
    const std::uint32_t editor = maximized({200, 150, 400, 300});
    startResize({1400, 850}, editor);
    restAt({1300, 800});
    EXPECT_FALSE(desktop.stateOf(editor).isMaximized());
    EXPECT_EQ(desktop.frameOf(editor), (Rect{0, 25, 1340, 825}));
    session.end();

    // A restored frame as large as the maximized one is taken as restored after a while.
    const std::uint32_t large = maximized({0, 25, 1440, 875});
    desktop.clearWrites();
    startMove({720, 200}, large);
    pointerTo({730, 200});
    desktop.advance(40ms);
    EXPECT_FALSE(geometryWritten());
    desktop.advance(200ms);
    EXPECT_EQ(desktop.frameOf(large), (Rect{10, 25, 1440, 875}));
    session.end();
}

}  // namespace
}  // namespace gf::test
