#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <chrono>
#include <memory>
#include <vector>

#include "engine/DragSession.h"
#include "engine/WindowLocation.h"
#include "fake/FakeDesktop.h"
#include "model/Settings.h"

namespace gf::test {

// A drag session on the fake desktop, with its ticks on virtual time: one window to drag, another
// beside it, and the move keys held.
class DragSessionTest : public ::testing::Test {
  protected:
    using Kind = FakeDesktop::Write::Kind;
    using Window = FakeDesktop::Window;

    static std::vector<Kind> kindsOf(const std::vector<FakeDesktop::Write>& writes) {
        std::vector<Kind> kinds;
        for (const auto& w : writes) {
            kinds.push_back(w.kind);
        }
        return kinds;
    }

    DragSessionTest() {
        settings.setMagneticsEnabled(false);
        window = desktop.addWindow(Window::at({100, 100, 400, 300}, pid));
        other = desktop.addWindow(Window::at({900, 500, 300, 200}, 99));
        // The move keys are held, and the main thread saw them pressed.
        desktop.holdModifiersSilently(ModifierFlag::control | ModifierFlag::command);
        session.noteModifiers(ModifierFlag::control | ModifierFlag::command);
    }

    std::shared_ptr<WindowHandle> handle(std::uint32_t number = 0) {
        return findWindowHandle(platform.windowControl, pid, number ? number : window);
    }
    // Begins, and lets the first tick (due at once) pass, so that every
    // pointerTo() below runs exactly one tick.
    void startMove(Point mouse, std::uint32_t number = 0) {
        session.beginMove(handle(number), pid, mouse);
        desktop.runPendingQueueWork();
    }
    void startResize(Point mouse, std::uint32_t number = 0) {
        session.beginResize(handle(number), pid, mouse);
        desktop.runPendingQueueWork();
    }
    // Moves the pointer and lets one tick apply it.
    void pointerTo(Point p) {
        session.setLatestMouse(p);
        desktop.advance(std::chrono::milliseconds(8));
    }

    static constexpr std::int32_t pid = 7;
    QTemporaryDir dir;
    Settings settings{dir.filePath("settings.conf")};
    FakeDesktop desktop;
    Platform platform = desktop.platform();
    DragSession session{settings, platform};
    std::uint32_t window = 0;
    std::uint32_t other = 0;
};

}  // namespace gf::test
