#include <limits>
#include <utility>

#include "DragSessionTest.h"

namespace gf::test {
namespace {

constexpr auto enhancedUI = DragSession::enhancedUserInterfaceAttribute;

TEST_F(DragSessionTest, MoveFollowsTheTotalDisplacementAndRaisesOnlyOnceMoved) {
    startMove({200, 200});
    EXPECT_TRUE(session.isDragging());
    EXPECT_FALSE(session.isResizing());
    desktop.advance(100ms);  // held keys, still pointer
    EXPECT_TRUE(desktop.writes().empty());
    EXPECT_EQ(desktop.stackingOrder().front(), other);

    session.setLatestMouse({260, 150});  // a detour the window never sees in full
    session.setLatestMouse({250, 180});
    desktop.advance(8ms);
    pointerTo({230, 210});
    EXPECT_EQ(desktop.frameOf(window), (Rect{130, 110, 400, 300}));
    EXPECT_EQ(desktop.stackingOrder().front(), window);
    EXPECT_EQ(kindsOf(desktop.writes()),
              (std::vector<Kind>{Kind::raise, Kind::makeMain, Kind::position, Kind::position}));
    EXPECT_EQ(desktop.writes()[2].point, (Point{150, 80}));

    // Back at the start point nothing is written: the window stays where it was put.
    desktop.clearWrites();
    pointerTo({200, 200});
    EXPECT_TRUE(desktop.writes().empty());
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{130, 110}));

    session.end();
    EXPECT_FALSE(session.isDragging());
    session.setLatestMouse({300, 300});
    desktop.advance(1s);
    EXPECT_TRUE(desktop.writes().empty());
    EXPECT_EQ(desktop.scheduledCount(), 0u);  // nothing ticks while idle
}

TEST_F(DragSessionTest, SettingsAreCopiedWhenTheGestureBegins) {
    startMove({200, 200});
    settings.setBringToFrontOnManipulate(false);
    settings.setMagneticsEnabled(true);
    pointerTo({197, 203});  // 3 from the window's own left edge, had lines been collected
    EXPECT_EQ(kindsOf(desktop.writes()),
              (std::vector<Kind>{Kind::raise, Kind::makeMain, Kind::position}));
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{97, 103}));
    session.end();

    desktop.clearWrites();
    startMove({200, 200});
    settings.setBringToFrontOnManipulate(true);
    EXPECT_EQ(originAfter({203, 200}),
              (Point{97, 103}));  // held on its own starting edge at x = 97
    EXPECT_EQ(originAfter({303, 200}), (Point{200, 103}));
    EXPECT_EQ(kindsOf(desktop.writes()), (std::vector<Kind>{Kind::position, Kind::position}));
    session.end();
}

TEST_F(DragSessionTest, MoveSnapsOnlyToLinesPresentWhenItBegan) {
    settings.setMagneticsEnabled(true);
    startMove({200, 200});
    desktop.addWindow(Window::at({0, 0, 250, 250}, 50));  // appears mid-move
    pointerTo({106, 140});                                // left side at 6, top at 40
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{0, 40}));
    EXPECT_EQ(originAfter({102, 126}),
              (Point{0, 25}));  // top at 26: the usable area's top line at 25
    EXPECT_EQ(originAfter({1135, 700}), (Point{1040, 600}));  // right side at 1435, bottom at 900
    EXPECT_EQ(originAfter({995, 200}),
              (Point{900, 100}));  // left side 5 from the other window's left edge
    EXPECT_EQ(originAfter({345, 400}),
              (Point{245, 300}));  // 5 from the new window's right edge, which is no line
    session.end();
}

TEST_F(DragSessionTest, EnhancedInterfaceIsSwitchedOffForTheGestureAndRestoredBehindItsLastWrite) {
    desktop.setAttribute(pid, enhancedUI, true);
    startMove({200, 200});
    desktop.advance(50ms);
    EXPECT_EQ(desktop.applicationAttribute(pid, enhancedUI), true);  // untouched until moved
    pointerTo({210, 200});
    EXPECT_EQ(desktop.applicationAttribute(pid, enhancedUI), false);
    pointerTo({220, 200});
    session.end();
    EXPECT_EQ(desktop.applicationAttribute(pid, enhancedUI), false);  // clean-up is queued
    desktop.runPendingQueueWork();
    EXPECT_EQ(desktop.applicationAttribute(pid, enhancedUI), true);

    const auto attributes = desktop.attributeWrites();
    const auto writes = desktop.writes();
    ASSERT_EQ(attributes.size(), 2u);
    EXPECT_FALSE(attributes[0].value);
    EXPECT_LT(attributes[0].sequence, writes[2].sequence);  // before the first position write
    EXPECT_GT(attributes[1].sequence, writes.back().sequence);

    // Off already, or missing: never touched. Nor by a gesture that never moved.
    desktop.clearWrites();
    for (std::optional<bool> value : {std::optional(false), std::optional<bool>()}) {
        desktop.setAttribute(pid, enhancedUI, value);
        startMove({200, 200});
        pointerTo({210, 200});
        session.end();
    }
    desktop.setAttribute(pid, enhancedUI, true);
    startMove({200, 200});
    session.end();
    session.end();  // harmless when idle
    desktop.advance(1s);
    EXPECT_TRUE(desktop.attributeWrites().empty());
}

TEST_F(DragSessionTest, DeclinesFullscreenWindowsAndWithoutAPositionGoesOnWithoutASize) {
    // Neither moved nor resized nor raised.
    const std::uint32_t video =
        desktop.addWindow(Window::at({0, 0, 1440, 900}, pid).withFullscreen());
    desktop.clearWrites();
    startMove({700, 400}, video);
    EXPECT_FALSE(session.isDragging());
    startResize({700, 400}, video);
    EXPECT_FALSE(session.isResizing());
    pointerTo({800, 500});
    EXPECT_TRUE(desktop.writes().empty());

    desktop.setGeometryReadable(window, false, true);
    startMove({200, 200});
    EXPECT_FALSE(session.isDragging());
    startResize({200, 200});
    EXPECT_FALSE(session.isResizing());

    desktop.setGeometryReadable(window, true, false);
    startResize({200, 200});
    EXPECT_FALSE(session.isResizing());
    startMove({200, 200});
    EXPECT_TRUE(session.isDragging());
    EXPECT_EQ(originAfter({210, 210}), (Point{110, 110}));
    session.end();
}

TEST_F(DragSessionTest, ResizeWritesPositionThenSizeEveryTickFromTheChosenCorner) {
    startResize({480, 380});
    EXPECT_TRUE(session.isResizing());
    EXPECT_EQ(session.corner(), ResizeCorner::bottomRight);
    desktop.advance(40ms);
    EXPECT_TRUE(desktop.writes().empty());
    pointerTo({530, 420});
    pointerTo({530, 420});
    EXPECT_EQ(kindsOf(desktop.writes()),
              (std::vector<Kind>{Kind::raise, Kind::makeMain, Kind::position, Kind::size,
                                 Kind::position, Kind::size}));
    EXPECT_EQ(desktop.frameOf(window), (Rect{100, 100, 450, 340}));
    session.end();

    startResize({120, 120});
    EXPECT_EQ(session.corner(), ResizeCorner::topLeft);
    pointerTo({1120, 1120});
    EXPECT_EQ(desktop.frameOf(window), (Rect{500, 390, 50, 50}));  // bottom-right corner kept
    session.end();

    settings.setResizeFromBottomRightOnly(true);
    startResize({501, 391});
    EXPECT_EQ(session.corner(), ResizeCorner::bottomRight);
    session.end();
    EXPECT_EQ(session.corner(), ResizeCorner::bottomRight);  // kept after the end

    // A window whose size cannot be set is not resized, nor moved instead.
    desktop.clearWrites();
    startResize({50, 50}, desktop.addWindow(Window::at({10, 10, 100, 100}, pid).withFixedSize()));
    EXPECT_FALSE(session.isResizing());
    pointerTo({150, 150});
    EXPECT_TRUE(desktop.writes().empty());
}

TEST_F(DragSessionTest, SampledTicksFollowThePointerOnTheirOwnAndSkipWhenItCannotBeRead) {
    desktop.pointerSamplingOffered = true;
    desktop.movePointer({200, 200});
    startMove({200, 200});
    EXPECT_TRUE(session.samplesPointer());
    desktop.advance(80ms);
    EXPECT_TRUE(desktop.writes().empty()) << "a pointer resting on its start moves nothing";
    EXPECT_EQ(desktop.pointerSamplesTaken(), 11u) << "one read per tick";

    desktop.movePointer({230, 210});
    desktop.movePointer({260, 150});  // only where it is at the tick counts
    desktop.advance(8ms);
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{160, 50}));

    desktop.pointerSamplingFails = true;
    desktop.movePointer({300, 300});
    desktop.advance(40ms);
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{160, 50}));
    desktop.pointerSamplingFails = false;
    desktop.advance(8ms);
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{200, 200}));

    // Keys changed before the main thread saw it: the position waits for what the change decides.
    desktop.holdModifiersSilently(ModifierFlag::control | ModifierFlag::option);
    desktop.movePointer({500, 500});
    desktop.advance(40ms);
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{200, 200}));
    // The main thread saw it and the gesture went on.
    session.noteModifiers(ModifierFlag::control | ModifierFlag::option);
    desktop.advance(8ms);
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{400, 400}));
    session.end();
    EXPECT_FALSE(session.samplesPointer());

    const std::size_t samples = desktop.pointerSamplesTaken();
    desktop.movePointer({900, 900});
    desktop.advance(1s);
    EXPECT_EQ(desktop.pointerSamplesTaken(), samples) << "nothing reads the pointer while idle";
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{400, 400}));
}

TEST_F(DragSessionTest, AMoveFollowsEachMotionAtOnceWhileAResizeKeepsTheTicksPace) {
    desktop.pointerSamplingOffered = true;
    desktop.movePointer({200, 200});
    startMove({200, 200});
    desktop.movePointer({230, 210});
    desktop.runPendingQueueWork();  // no time passes
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{130, 110}));
    session.end();
    desktop.runPendingQueueWork();
    desktop.clearWrites();
    desktop.movePointer({300, 300});
    desktop.runPendingQueueWork();
    EXPECT_TRUE(desktop.writes().empty()) << "an ended gesture follows nothing";

    startResize({300, 300});
    desktop.movePointer({320, 330});
    desktop.runPendingQueueWork();
    EXPECT_TRUE(desktop.writes().empty());
    desktop.advance(8ms);
    EXPECT_FALSE(desktop.writes().empty());
}

TEST_F(DragSessionTest, APointerSampledAcrossTheEndOfAGestureIsAppliedToNeither) {
    desktop.pointerSamplingOffered = true;
    desktop.movePointer({200, 200});
    startMove({200, 200});
    const std::int32_t otherPid = 99;
    bool swapped = false;
    // While the tick waits for the pointer, the keys are pressed again over the other window.
    desktop.whilePointerIsSampled = [&] {
        if (std::exchange(swapped, true)) {
            return;
        }
        session.end();
        desktop.movePointer({950, 550});
        session.beginMove(findWindowHandle(platform.windowControl, otherPid, other), otherPid,
                          {950, 550});
    };
    desktop.movePointer({230, 210});
    desktop.advance(8ms);
    ASSERT_TRUE(swapped);
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{100, 100}));
    EXPECT_EQ(desktop.frameOf(other).origin(), (Point{900, 500}));

    desktop.movePointer({960, 570});
    desktop.advance(8ms);
    EXPECT_EQ(desktop.frameOf(other).origin(), (Point{910, 520}));
    EXPECT_EQ(desktop.frameOf(window).origin(), (Point{100, 100}));
}

TEST_F(DragSessionTest, ACancelPutsTheFrameBackBehindTheLastTickAndOnlyWhenItChangedIt) {
    startResize({120, 120});
    pointerTo({100, 90});
    pointerTo({60, 80});
    EXPECT_EQ(desktop.frameOf(window), (Rect{40, 60, 460, 340}));
    session.cancel();
    EXPECT_FALSE(session.isResizing());
    desktop.runPendingQueueWork();
    EXPECT_EQ(desktop.frameOf(window), (Rect{100, 100, 400, 300}));
    session.setLatestMouse({0, 0});
    desktop.advance(1s);
    EXPECT_EQ(desktop.frameOf(window), (Rect{100, 100, 400, 300}));
    EXPECT_EQ(desktop.scheduledCount(), 0u);

    // Never moved: nothing to write. Its window gone: nothing to find.
    desktop.clearWrites();
    startMove({200, 200});
    session.cancel();
    desktop.runPendingQueueWork();
    EXPECT_TRUE(desktop.writes().empty());
    startMove({200, 200});
    pointerTo({250, 250});
    desktop.removeWindow(window);
    session.cancel();
    desktop.runPendingQueueWork();
    EXPECT_EQ(desktop.frameOf(other), (Rect{900, 500, 300, 200}));
}

TEST(DragSessionGeometryTest, ResizedFramesKeepTheOppositeCornerWithinMinimumAndFirstDisplay) {
    const Rect start{100, 100, 400, 300};
    const Rect screen{0, 0, 1440, 900};
    auto resized = [&](ResizeCorner c, double dx, double dy) {
        return DragSession::resizedFrame(c, start, dx, dy, screen);
    };
    using C = ResizeCorner;
    EXPECT_EQ(resized(C::bottomRight, 50, 40), (Rect{100, 100, 450, 340}));
    EXPECT_EQ(resized(C::bottomRight, -500, -500), (Rect{100, 100, 50, 50}));
    EXPECT_EQ(resized(C::bottomRight, 2000, 2000), (Rect{100, 100, 1340, 800}));
    EXPECT_EQ(resized(C::topLeft, 20, 10), (Rect{120, 110, 380, 290}));
    EXPECT_EQ(resized(C::topLeft, 1000, 1000), (Rect{450, 350, 50, 50}));
    EXPECT_EQ(resized(C::topLeft, -300, -300), (Rect{0, 0, 500, 400}));
    EXPECT_EQ(resized(C::topRight, 50, -50), (Rect{100, 50, 450, 350}));
    EXPECT_EQ(resized(C::bottomLeft, -50, 50), (Rect{50, 100, 450, 350}));

    // Less room than the minimum: the room wins. A NaN displacement gives the minimum.
    const Rect atEdge{1400, 100, 40, 300};
    EXPECT_EQ(DragSession::resizedFrame(C::bottomRight, atEdge, 0, 0, screen).width, 40);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(DragSession::resizedFrame(C::bottomRight, start, nan, 0, screen),
              (Rect{100, 100, 50, 300}));

    const Rect frame{100, 100, 400, 300};
    EXPECT_EQ(DragSession::cornerFor({480, 380}, frame), C::bottomRight);
    EXPECT_EQ(DragSession::cornerFor({120, 120}, frame), C::topLeft);
    EXPECT_EQ(DragSession::cornerFor({400, 120}, frame), C::topRight);
    EXPECT_EQ(DragSession::cornerFor({120, 300}, frame), C::bottomLeft);
    EXPECT_EQ(DragSession::cornerFor({300, 250}, frame), C::bottomRight);  // the centre

    // Primary 1440 x 900; a 1920 x 1080 display above it, its left edge at x = -200.
    const Rect above{-200, -1080, 1920, 1080};
    const std::vector<DisplayInfo> screens{{{0, 0, 1440, 900}, {0, 25, 1440, 875}}, {above, above}};
    EXPECT_EQ(DragSession::screenFrameContaining({100, -500, 300, 200}, screens), above);
    EXPECT_EQ(DragSession::screenFrameContaining({100, -100, 300, 200}, screens),
              (Rect{0, 0, 1440, 900}));  // straddles both: the primary is listed first
    EXPECT_EQ(DragSession::screenFrameContaining({5000, 5000, 10, 10}, screens),
              (Rect{0, 0, 1440, 900}));
    EXPECT_EQ(DragSession::screenFrameContaining({5000, 5000, 10, 10}, {}),
              (Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(DragSession::resizedFrame(ResizeCorner::topLeft, {100, -500, 300, 200}, -2000, -2000,
                                        above),
              (Rect{-200, -1080, 600, 780}));
}

}  // namespace
}  // namespace gf::test
