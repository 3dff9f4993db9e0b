#include "engine/AutoRaiseManager.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <vector>

#include "fake/FakeDesktop.h"
#include "model/ModifierKey.h"
#include "model/Settings.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

constexpr std::int32_t kPidA = 1001;
constexpr std::int32_t kPidB = 1002;
constexpr Point kOverA{150, 150};
constexpr Point kOverB{550, 150};
constexpr Point kEmptySpot{1200, 800};

class AutoRaiseManagerTest : public ::testing::Test {
  protected:
    AutoRaiseManagerTest() {
        settings.setAutoRaiseEnabled(true);
        settings.setAutoRaiseDelay(0.25);
        manager.start();
    }
    ~AutoRaiseManagerTest() override { manager.stop(); }

    // Each raise, in order, as the window number it was applied to.
    std::vector<std::uint32_t> raised() const {
        std::vector<std::uint32_t> numbers;
        for (const FakeDesktop::Write& w : desktop.writes()) {
            if (w.kind == FakeDesktop::Write::Kind::raise) {
                numbers.push_back(w.window);
            }
        }
        return numbers;
    }

    QTemporaryDir dir;
    Settings settings{dir.filePath("glimmerfold.conf")};
    FakeDesktop desktop;
    Platform platform = desktop.platform();
    std::uint32_t windowA = desktop.addWindow(
        FakeDesktop::Window::at({100, 100, 300, 300}, kPidA).withIdentifier("org.a"));
    std::uint32_t windowB = desktop.addWindow(
        FakeDesktop::Window::at({500, 100, 300, 300}, kPidB).withIdentifier("org.b"));
    AutoRaiseManager manager{settings, platform};
};

using Raised = std::vector<std::uint32_t>;

TEST_F(AutoRaiseManagerTest, HoldsOneMonitorWhileStartedAndNoneWhenStopped) {
    manager.start();
    EXPECT_EQ(desktop.pointerMonitorCount(), 1u);

    desktop.movePointer(kOverA);
    EXPECT_EQ(manager.lastWindowID(), windowA);
    manager.stop();
    manager.stop();
    EXPECT_EQ(desktop.pointerMonitorCount(), 0u);
    EXPECT_EQ(manager.lastWindowID(), 0u);
    desktop.advance(1s);
    EXPECT_EQ(raised(), Raised{}) << "stop cancels the pending raise";
}

TEST_F(AutoRaiseManagerTest, RaisesOnlyTheWindowThePointerRestsOn) {
    ASSERT_EQ(desktop.stackingOrder().front(), windowB);
    desktop.movePointer(kOverB);
    desktop.advance(100ms);
    desktop.movePointer(kOverA);
    desktop.advance(249ms);
    EXPECT_EQ(raised(), Raised{}) << "not before the delay";
    desktop.advance(1ms);
    EXPECT_EQ(raised(), Raised{windowA});

    const std::vector<FakeDesktop::Write> writes = desktop.writes();
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[1].kind, FakeDesktop::Write::Kind::makeMain);
    EXPECT_EQ(desktop.stackingOrder().front(), windowA);
    EXPECT_TRUE(desktop.activatedPids.empty()) << "one window only, by default";

    // Wandering about inside the raised window raises nothing more.
    for (double x = 160; x < 300; x += 20) {
        desktop.movePointer({x, 200});
        desktop.advance(100ms);
    }
    EXPECT_EQ(raised(), Raised{windowA});
}

TEST_F(AutoRaiseManagerTest, RaisesAWindowAgainAfterThePointerWasElsewhereUntilSwitchedOff) {
    // The ignore list plays no part in raising.
    settings.setIgnoreList({{"org.a", "A"}});

    desktop.movePointer(kOverA);
    desktop.advance(300ms);
    desktop.movePointer(kOverB);
    desktop.advance(300ms);
    desktop.movePointer(kOverA);
    desktop.advance(300ms);
    EXPECT_EQ(raised(), (Raised{windowA, windowB, windowA}));

    desktop.movePointer(kEmptySpot);
    EXPECT_EQ(manager.lastWindowID(), 0u);
    desktop.movePointer(kOverA);
    desktop.advance(300ms);
    EXPECT_EQ(raised(), (Raised{windowA, windowB, windowA, windowA}));

    // An empty spot reached before the delay cancels the pending raise.
    desktop.movePointer(kOverB);
    desktop.advance(100ms);
    desktop.movePointer(kEmptySpot);
    desktop.advance(1s);
    EXPECT_EQ(raised().size(), 4u);

    // Switched off, a pending raise still happens but nothing new is followed.
    desktop.movePointer(kOverB);
    settings.setAutoRaiseEnabled(false);
    desktop.movePointer(kOverA);
    desktop.advance(1s);
    EXPECT_EQ(raised(), (Raised{windowA, windowB, windowA, windowA, windowB}));
    EXPECT_EQ(manager.lastWindowID(), windowB);
}

TEST_F(AutoRaiseManagerTest, AKeyConditionCancelsWithoutForgettingTheTarget) {
    settings.setAutoRaiseModifiers({ModifierKey::control()});

    desktop.movePointer(kOverA, 0);
    desktop.advance(1s);
    EXPECT_EQ(raised(), Raised{});
    EXPECT_EQ(manager.lastWindowID(), 0u);

    desktop.movePointer(kOverA, ModifierFlag::control);
    desktop.advance(100ms);
    desktop.movePointer({160, 160}, 0);  // control let go: the pending raise goes
    desktop.advance(1s);
    EXPECT_EQ(raised(), Raised{});
    EXPECT_EQ(manager.lastWindowID(), windowA);

    // Still the last target, so pressing control again over it raises nothing.
    desktop.movePointer({170, 170}, ModifierFlag::control);
    desktop.advance(1s);
    EXPECT_EQ(raised(), Raised{});

    // Extra keys do not spoil the condition.
    const std::uint64_t controlShift = ModifierFlag::control | ModifierFlag::shift;
    desktop.movePointer(kOverB, controlShift);
    desktop.advance(300ms);
    desktop.movePointer(kOverA, controlShift);
    desktop.advance(300ms);
    EXPECT_EQ(raised(), (Raised{windowB, windowA}));
}

TEST_F(AutoRaiseManagerTest, UsesTheSettingsReadWhenTheTargetWasChosen) {
    settings.setAutoRaiseAllWindows(true);
    desktop.movePointer(kOverB);
    settings.setAutoRaiseAllWindows(false);
    settings.setAutoRaiseDelay(5.0);
    desktop.advance(250ms);
    EXPECT_EQ(raised(), Raised{windowB});
    EXPECT_EQ(desktop.activatedPids, std::vector<std::int32_t>{kPidB});

    desktop.movePointer(kOverA);
    desktop.advance(4999ms);
    EXPECT_EQ(raised(), Raised{windowB});
    desktop.advance(1ms);
    EXPECT_EQ(raised(), (Raised{windowB, windowA}));
    EXPECT_EQ(desktop.activatedPids, std::vector<std::int32_t>{kPidB});
}

}  // namespace
}  // namespace gf::test
