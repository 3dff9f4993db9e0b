// Gestures begun and ended on the main thread while ticks run on a real queue; also under TSan.
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <chrono>
#include <cmath>
#include <map>
#include <random>

#include "engine/DragSession.h"
#include "engine/WindowLocation.h"
#include "fake/FakeDesktop.h"
#include "model/Settings.h"
#include "platform/ThreadSerialQueueFactory.h"

namespace gf::test {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = FakeDesktop::Write::Kind;

constexpr int gestureCount = 2000;
constexpr double spacing = 1000;  // between the windows' starting x, far beyond any snap
constexpr double maxStep = 20;    // the furthest the pointer strays in one gesture

struct Target {
    std::uint32_t window = 0;
    std::int32_t pid = 0;
    Point start;
    bool resize = false;
};

// Each window starts in its own band of x: a write mixing two gestures lands a band away.
bool isNearStart(const FakeDesktop::Write& w, const Target& t) {
    if (w.kind == Kind::position) {
        return std::abs(w.point.x - t.start.x) <= maxStep &&
               std::abs(w.point.y - t.start.y) <= maxStep;
    }
    if (w.kind == Kind::size) {
        return t.resize && std::abs(w.size.width - 400) <= maxStep &&
               std::abs(w.size.height - 300) <= maxStep;
    }
    return true;
}

class DragSessionConcurrencyTest : public ::testing::TestWithParam<bool> {};

TEST_P(DragSessionConcurrencyTest, TicksNeverMixGesturesAndCleanUpsComeLast) {
    const bool sampled = GetParam();
    QTemporaryDir dir;
    Settings settings(dir.filePath("settings.conf"));
    settings.setMagneticsEnabled(false);
    FakeDesktop desktop;
    desktop.pointerSamplingOffered = sampled;
    desktop.holdModifiersSilently(ModifierFlag::control | ModifierFlag::command);
    // One display wide enough for every window, so resizes are limited by it alone.
    const Rect wide{0, 0, spacing * (gestureCount + 3), 1000};
    desktop.setDisplays({{wide, wide}});
    ThreadSerialQueueFactory realQueues;
    std::mt19937 random(20240611);
    std::uniform_int_distribution<int> step(1, static_cast<int>(maxStep));
    std::uniform_int_distribution<int> holdMicros(0, 300);
    std::map<std::uint32_t, Target> targets;
    {
        DragSession session(settings, desktop.platform(realQueues));
        session.noteModifiers(ModifierFlag::control | ModifierFlag::command);
        for (int i = 0; i < gestureCount; ++i) {
            Target t{0, 10'000 + i, {spacing * (i + 2), 100}, i % 3 == 0};
            t.window =
                desktop.addWindow(FakeDesktop::Window::at({t.start.x, t.start.y, 400, 300}, t.pid));
            desktop.setAttribute(t.pid, DragSession::enhancedUserInterfaceAttribute, true);
            targets[t.window] = t;
            // Now and then with magnetics, whose lines come from the main thread.
            settings.setMagneticsEnabled(i % 50 == 0);

            auto handle = findWindowHandle(desktop.platform().windowControl, t.pid, t.window);
            const Point mouse{t.start.x + 100 + i % 2 * 250, t.start.y + 100};
            // A tick still reading the previous gesture's pointer would land a band away.
            desktop.movePointer(mouse);
            if (t.resize) {
                session.beginResize(handle, t.pid, mouse);
            } else {
                session.beginMove(handle, t.pid, mouse);
            }
            // Mostly short gestures, which race the first tick; now and then repeating ticks.
            const auto hold = std::chrono::microseconds(i % 32 == 0 ? 20'000 : holdMicros(random));
            const auto until = Clock::now() + hold;
            do {
                const Point p{mouse.x + step(random) - maxStep / 2,
                              mouse.y + step(random) - maxStep / 2};
                if (sampled) {
                    desktop.movePointer(p);
                } else {
                    session.setLatestMouse(p);
                }
            } while (Clock::now() < until);
            session.end();
        }
    }  // the session drains its queue here

    std::size_t positionWrites = 0;
    std::map<std::int32_t, std::uint64_t> restoredAt;
    for (const auto& a : desktop.attributeWrites()) {
        if (a.value) {
            EXPECT_FALSE(restoredAt.contains(a.pid)) << "restored twice: " << a.pid;
            restoredAt[a.pid] = a.sequence;
        }
    }
    for (const auto& w : desktop.writes()) {
        const Target& t = targets.at(w.window);
        EXPECT_TRUE(isNearStart(w, t))
            << "window " << w.window << " written at (" << w.point.x << ", " << w.point.y
            << ") size " << w.size.width << " x " << w.size.height;
        ASSERT_TRUE(restoredAt.contains(t.pid)) << "a moved window's application was not restored";
        EXPECT_LT(w.sequence, restoredAt[t.pid]) << "written after its clean-up: " << w.window;
        positionWrites += w.kind == Kind::position;
    }
    for (const auto& [window, t] : targets) {
        EXPECT_EQ(desktop.applicationAttribute(t.pid, DragSession::enhancedUserInterfaceAttribute),
                  true);
    }
    // The stress only means something if ticks really ran during gestures.
    EXPECT_GT(positionWrites, 100u);
    EXPECT_EQ(desktop.pointerSamplesTaken() > 0, sampled);
}

INSTANTIATE_TEST_SUITE_P(PointerSource, DragSessionConcurrencyTest, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "Sampled" : "Handed";
                         });

}  // namespace
}  // namespace gf::test
