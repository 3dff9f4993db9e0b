#pragma once

#include "EngineTest.h"
#include "engine/DragSession.h"
#include "engine/WindowLocation.h"

namespace gf::test {

// One window to drag, another beside it, and the move keys held; ticks on virtual time.
class DragSessionTest : public EngineTest {
  protected:
    using Kind = FakeDesktop::Write::Kind;

    static std::vector<Kind> kindsOf(const std::vector<FakeDesktop::Write>& writes) {
        const auto kinds = writes | std::views::transform(&FakeDesktop::Write::kind);
        return {kinds.begin(), kinds.end()};
    }

    DragSessionTest() {
        settings.setMagneticsEnabled(false);
        window = desktop.addWindow(Window::at({100, 100, 400, 300}, pid));
        other = desktop.addWindow(Window::at({900, 500, 300, 200}, 99));
        desktop.holdModifiersSilently(ModifierFlag::control | ModifierFlag::command);
        session.noteModifiers(ModifierFlag::control | ModifierFlag::command);
    }

    std::shared_ptr<WindowHandle> handle(std::uint32_t number = 0) {
        return findWindowHandle(platform.windowControl, pid, number ? number : window);
    }
    // Lets the first tick (due at once) pass, so that each pointerTo() runs exactly one tick.
    void startMove(Point mouse, std::uint32_t number = 0) {
        session.beginMove(handle(number), pid, mouse);
        desktop.runPendingQueueWork();
    }
    void startResize(Point mouse, std::uint32_t number = 0) {
        session.beginResize(handle(number), pid, mouse);
        desktop.runPendingQueueWork();
    }
    void pointerTo(Point p) {
        session.setLatestMouse(p);
        desktop.advance(std::chrono::milliseconds(8));
    }
    Point originAfter(Point p) {
        pointerTo(p);
        return desktop.frameOf(window).origin();
    }

    static constexpr std::int32_t pid = 7;
    DragSession session{settings, platform};
    std::uint32_t window = 0;
    std::uint32_t other = 0;
};

}  // namespace gf::test
