#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include "engine/AutoRaiseManager.h"
#include "engine/DragSession.h"
#include "engine/EventTapManager.h"
#include "model/Settings.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/ThreadSerialQueueFactory.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {

std::string describe(Rect r);

inline constexpr std::initializer_list<std::uint32_t> moveKeys{Keysym::controlL, Keysym::superL};
inline constexpr std::initializer_list<std::uint32_t> resizeKeys{Keysym::controlL, Keysym::altL};

// The engine in this process, wired to the X11 backend on a private desktop:
// XTest plays the user's hands, the backend's events feed the engine, the drag
// session's ticks run on a real background queue, and the outcome is checked
// on the frames the user sees, as the server reports them. The event tap runs
// from the start; auto raise only when a test starts it.
class EngineDesktopTest : public X11DesktopTest {
  protected:
    void SetUp() override;
    void TearDown() override;

    const DragSession& session() const { return tapManager_->dragSession(); }
    // Lets the engine see everything the hand did so far: a round trip on the backend's
    // connection brings in the events sent before it, handling them may select pointer motion,
    // and a second round trip puts that in effect.
    void settle();
    void press(std::initializer_list<std::uint32_t> keys);
    void release(std::initializer_list<std::uint32_t> keys);
    // A relative move, as a mouse makes it.
    void moveBy(int dx, int dy);
    // Puts the pointer somewhere and waits until the backend reads it there.
    void pointerAt(Point p);

    // The visible frame (decorations included, invisible margins left out);
    // an empty rectangle once the window is gone.
    Rect frameOf(WindowId window) const;
    // Waits until the visible frame is the expected one; on failure says where it was instead.
    ::testing::AssertionResult frameBecomes(WindowId window, Rect expected);
    static Point centreOf(Rect r);

    QTemporaryDir dir_;
    Settings settings_{dir_.filePath("glimmerfold.conf")};
    QtMainThreadScheduler scheduler_;
    ThreadSerialQueueFactory queues_;
    std::unique_ptr<X11Platform> x11_;
    std::optional<Platform> platform_;
    std::unique_ptr<EventTapManager> tapManager_;
    std::unique_ptr<AutoRaiseManager> autoRaise_;
};

}  // namespace gf::test
