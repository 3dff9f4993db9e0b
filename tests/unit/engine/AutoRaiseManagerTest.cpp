#include "engine/AutoRaiseManager.h"

#include "EngineTest.h"

namespace gf::test {
namespace {

constexpr std::int32_t kPidA = 1001;
constexpr std::int32_t kPidB = 1002;
constexpr Point kOverA{150, 150};
constexpr Point kOverB{550, 150};
constexpr Point kEmptySpot{1200, 800};

class AutoRaiseManagerTest : public EngineTest {
  protected:
    AutoRaiseManagerTest() {
        settings.setAutoRaiseEnabled(true);
        settings.setAutoRaiseDelay(0.25);
        manager.start();
    }

    std::vector<std::uint32_t> raised() const {
        auto raises = desktop.writes() | std::views::filter([](const auto& w) {
                          return w.kind == FakeDesktop::Write::Kind::raise;
                      }) |
                      std::views::transform(&FakeDesktop::Write::window);
        return {raises.begin(), raises.end()};
    }

    std::uint32_t windowA =
        desktop.addWindow(Window::at({100, 100, 300, 300}, kPidA).withIdentifier("org.a"));
    std::uint32_t windowB =
        desktop.addWindow(Window::at({500, 100, 300, 300}, kPidB).withIdentifier("org.b"));
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
    restAt(kOverB, 100ms);
    restAt(kOverA, 249ms);
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
        restAt({x, 200}, 100ms);
    }
    EXPECT_EQ(raised(), Raised{windowA});
}

TEST_F(AutoRaiseManagerTest, RaisesAWindowAgainAfterThePointerWasElsewhereUntilSwitchedOff) {
    settings.setIgnoreList({{"org.a", "A"}});  // the ignore list plays no part in raising

    restAt(kOverA, 300ms);
    restAt(kOverB, 300ms);
    restAt(kOverA, 300ms);
    EXPECT_EQ(raised(), (Raised{windowA, windowB, windowA}));

    desktop.movePointer(kEmptySpot);
    EXPECT_EQ(manager.lastWindowID(), 0u);
    restAt(kOverA, 300ms);
    EXPECT_EQ(raised(), (Raised{windowA, windowB, windowA, windowA}));

    // An empty spot reached before the delay cancels the pending raise.
    restAt(kOverB, 100ms);
    restAt(kEmptySpot, 1s);
    EXPECT_EQ(raised().size(), 4u);

    // Switched off, a pending raise still happens but nothing new is followed.
    desktop.movePointer(kOverB);
    settings.setAutoRaiseEnabled(false);
    restAt(kOverA, 1s);
    EXPECT_EQ(raised(), (Raised{windowA, windowB, windowA, windowA, windowB}));
    EXPECT_EQ(manager.lastWindowID(), windowB);
}

TEST_F(AutoRaiseManagerTest, AKeyConditionCancelsWithoutForgettingTheTarget) {
    settings.setAutoRaiseModifiers({ModifierKey::control()});

    restAt(kOverA, 1s, 0);
    EXPECT_EQ(raised(), Raised{});
    EXPECT_EQ(manager.lastWindowID(), 0u);

    restAt(kOverA, 100ms, ModifierFlag::control);
    restAt({160, 160}, 1s, 0);  // control let go: the pending raise goes
    EXPECT_EQ(raised(), Raised{});
    EXPECT_EQ(manager.lastWindowID(), windowA);

    // Still the last target, so pressing control again over it raises nothing.
    restAt({170, 170}, 1s, ModifierFlag::control);
    EXPECT_EQ(raised(), Raised{});

    // Extra keys do not spoil the condition.
    const std::uint64_t controlShift = ModifierFlag::control | ModifierFlag::shift;
    restAt(kOverB, 300ms, controlShift);
    restAt(kOverA, 300ms, controlShift);
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

    restAt(kOverA, 4999ms);
    EXPECT_EQ(raised(), Raised{windowB});
    desktop.advance(1ms);
    EXPECT_EQ(raised(), (Raised{windowB, windowA}));
    EXPECT_EQ(desktop.activatedPids, std::vector<std::int32_t>{kPidB});
}

}  // namespace
}  // namespace gf::test
