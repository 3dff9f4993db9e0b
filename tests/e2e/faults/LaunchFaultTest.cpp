// Two launches come at the same moment.
#include <signal.h>

#include "FaultTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

TEST_F(FaultTest, OfTwoLaunchesAtOnceExactlyOneKeepsRunning) {
    // Away from the middle of the screen, where the survivor opens its Settings window each time
    // a second launch hands over to it.
    TestClient& logo = desktop().startXlogo(40, 500, 200, 150);
    constexpr int kRounds = 3;
    for (int round = 1; round <= kRounds; ++round) {
        const std::string a = "a" + std::to_string(round) + ".out";
        const std::string b = "b" + std::to_string(round) + ".out";
        auto first = launch(a);
        auto second = launch(b);
        ASSERT_TRUE(first && second);
        ASSERT_TRUE(waitUntil([&] { return !first->isRunning() || !second->isRunning(); }, 15s))
            << "round " << round << ": both still run\n"
            << glimmerfold().output(a) << glimmerfold().output(b);
        std::unique_ptr<ChildProcess>& gone = first->isRunning() ? second : first;
        std::unique_ptr<ChildProcess>& kept = first->isRunning() ? first : second;
        EXPECT_EQ(gone->waitForExit(1s), 0)
            << "round " << round << ": the second launch hands over";
        ASSERT_TRUE(kept->isRunning()) << "round " << round << ": none keeps running\n"
                                       << glimmerfold().output(a) << glimmerfold().output(b);
        ASSERT_TRUE(glimmerfold().waitForEventTaps(static_cast<std::size_t>(round)));
        expectGesturesWork(logo.window, "with one instance left");
        EXPECT_TRUE(kept->isRunning());
        EXPECT_EQ(glimmerfold().eventTapsLogged(), static_cast<std::size_t>(round))
            << "round " << round << ": only one instance made an event tap";
        ::kill(kept->pid(), SIGTERM);
        EXPECT_EQ(kept->waitForExit(10s), 0);
    }
}

}  // namespace
}  // namespace gf::test
